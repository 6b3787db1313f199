#include "hosts/cli/compare/html.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

namespace vx::cli {
namespace {

struct Free {
  void operator()(char* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<char, Free>;

}  // namespace

std::string escaped(std::string_view text) {
  const OwnedText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  std::string result;
  for (const char c : std::string_view(valid.get())) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string filled(std::string_view text,
                   std::initializer_list<std::pair<std::string_view, std::string>> values) {
  std::string result;
  for (std::size_t open = text.find("{{"); open != std::string_view::npos; open = text.find("{{")) {
    const std::size_t close = text.find("}}", open);
    if (close == std::string_view::npos) break;
    const std::string_view name = text.substr(open + 2, close - open - 2);
    const auto value = std::find_if(values.begin(), values.end(),
                                    [name](const auto& entry) { return entry.first == name; });
    if (value == values.end()) throw std::logic_error("no value for " + std::string(name));
    result.append(text.substr(0, open)).append(value->second);
    text.remove_prefix(close + 2);
  }
  return result.append(text);
}

std::string base64(std::span<const std::uint8_t> bytes) {
  const OwnedText text(g_base64_encode(bytes.data(), bytes.size()));
  return text.get();
}

std::string sha256InBase64(std::string_view text) {
  std::array<std::uint8_t, 32> digest{};
  gsize size = digest.size();
  GChecksum* sum = g_checksum_new(G_CHECKSUM_SHA256);
  g_checksum_update(sum, reinterpret_cast<const guchar*>(text.data()),
                    static_cast<gssize>(text.size()));
  g_checksum_get_digest(sum, digest.data(), &size);
  g_checksum_free(sum);
  return base64(digest);
}

}  // namespace vx::cli
