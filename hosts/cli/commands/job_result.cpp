#include "hosts/cli/commands/job_result.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "hosts/cli/pictures/standard_stream.h"

namespace vx::cli {
namespace {

using Json = nlohmann::ordered_json;

template <typename Value>
std::string oneLine(const Value& json) {
  return json.dump(-1, ' ', false, Value::error_handler_t::replace);
}

double rounded(double value) {
  return static_cast<double>(static_cast<long long>(value * 1000 + 0.5)) / 1000;
}

void appendLine(std::string& text, const char* title, const std::string& content) {
  char head[16];
  std::snprintf(head, sizeof head, "  %-9s ", title);
  text += head + content + '\n';
}

}  // namespace

NLOHMANN_JSON_SERIALIZE_ENUM(Status, {{Status::kDone, "done"},
                                      {Status::kSkipped, "skipped"},
                                      {Status::kFailed, "failed"},
                                      {Status::kCancelled, "cancelled"}})
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Seconds, reading, treating, writing)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Piece, offset, size)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ShownPair, markup, error)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(JobResult, status, error, chosen, notes, damaged, width, height,
                                   depth, resultDepth, seconds, megabytes, metadataBefore,
                                   metadataAfter, shown)

std::string packed(const JobResult& result) { return oneLine(nlohmann::json(result)); }

JobResult unpacked(const std::string& text) { return nlohmann::json::parse(text).get<JobResult>(); }

std::string jsonLine(const Job& job, const JobResult& result, const settings::Texts& settings) {
  Json json{
      {"file", nameOf(job.input)}, {"result", job.output.string()}, {"status", result.status}};
  if (!result.error.empty()) json["error"] = result.error;
  if (result.status == Status::kDone) {
    Json& chosen = json["settings"] = Json::object();
    for (const auto& [name, value] : settings) chosen[name] = value;
    json["chosen"] = result.chosen;
    json["notes"] = result.notes;
    json["damaged"] = result.damaged;
    json["width"] = result.width;
    json["height"] = result.height;
    json["depth"] = result.resultDepth;
    json["seconds"] = {{"reading", rounded(result.seconds.reading)},
                       {"treating", rounded(result.seconds.treating)},
                       {"writing", rounded(result.seconds.writing)}};
    json["metadata"] = result.metadataAfter;
  }
  return oneLine(json);
}

std::string report(const Job& job, const JobResult& result, const std::string& verb,
                   const settings::Texts& settings) {
  const Seconds& s = result.seconds;
  char line[160];
  std::string text = nameOf(job.input) + " -> " +
                     (job.toStandardOutput() ? "standard output" : job.output.string()) + '\n';
  appendLine(text, "settings", settings::inWords(settings));
  std::snprintf(line, sizeof line, "%d x %d (%.1f megapixels), %d bits", result.width,
                result.height, 1e-6 * result.width * result.height, result.depth);
  const bool deeper = result.depth != result.resultDepth;
  appendLine(text, "picture",
             line + (deeper ? " -> " + std::to_string(result.resultDepth) + " bits" : ""));
  std::snprintf(line, sizeof line, "%.2f (reading %.2f, %s %.2f, writing %.2f)",
                s.reading + s.treating + s.writing, s.reading, verb.c_str(), s.treating, s.writing);
  appendLine(text, "seconds", line);
  std::snprintf(line, sizeof line, "%.0f MB at the peak", result.megabytes);
  appendLine(text, "memory", line);
  const bool kept = result.metadataBefore == result.metadataAfter;
  appendLine(text, "metadata",
             kept ? "kept: " + result.metadataAfter
                  : result.metadataAfter + " (before: " + result.metadataBefore + ")");
  return text;
}

}  // namespace vx::cli
