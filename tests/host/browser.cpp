#include "tests/host/browser.h"

#include <fcntl.h>
#include <glib.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <map>
#include <stdexcept>

namespace vx::host_test {

std::string Browser::program() {
  for (const char* name : {"chromium", "chromium-browser", "google-chrome"})
    if (gchar* found = g_find_program_in_path(name)) {
      std::string path = found;
      g_free(found);
      return path;
    }
  return "";
}

Browser::Browser(const std::string& folder) {
  const std::string name = program(), profile = "--user-data-dir=" + folder;
  const std::array<const char*, 13> words{name.c_str(),
                                          "--headless",
                                          "--no-sandbox",
                                          "--disable-gpu",
                                          "--disable-quic",
                                          "--no-first-run",
                                          "--disable-background-networking",
                                          "--disable-component-update",
                                          "--disable-sync",
                                          "--hide-scrollbars",
                                          "--remote-debugging-pipe",
                                          profile.c_str(),
                                          nullptr};
  std::array<int, 2> down{}, up{};
  if (pipe2(down.data(), O_CLOEXEC) != 0 || pipe2(up.data(), O_CLOEXEC) != 0)
    throw std::runtime_error("no pipe");
  process_ = fork();
  if (process_ == 0) {
    setpgid(0, 0);
    // Out of the way of the descriptors that the browser expects: 3 to read, 4 to write.
    const int read = fcntl(down[0], F_DUPFD, 10), write = fcntl(up[1], F_DUPFD, 10);
    const int nothing = ::open("/dev/null", O_RDWR);
    dup2(nothing, STDOUT_FILENO), dup2(nothing, STDERR_FILENO);
    dup2(read, 3), dup2(write, 4);
    close(read), close(write);
    execv(name.c_str(), const_cast<char**>(words.data()));
    _exit(127);
  }
  close(down[0]), close(up[1]);
  in_ = down[1], out_ = up[0];
  const Json target = call("Target.createTarget", {{"url", "about:blank"}});
  session_ = call("Target.attachToTarget",
                  {{"targetId", target["targetId"]}, {"flatten", true}})["sessionId"];
  for (const char* domain : {"Page", "Runtime", "Log", "Network"})
    call(std::string(domain) + ".enable");
}

Browser::~Browser() {
  close(in_), close(out_);
  kill(-process_, SIGKILL);  // the group holds what it started
  waitpid(process_, nullptr, 0);
}

Json Browser::next() {
  std::size_t end = 0;
  while ((end = received_.find('\0')) == std::string::npos) {
    pollfd file{out_, POLLIN, 0};
    std::array<char, 65536> block{};
    const ssize_t got = poll(&file, 1, 60000) > 0 ? read(out_, block.data(), block.size()) : 0;
    if (got <= 0) throw std::runtime_error("the browser does not answer");
    received_.append(block.data(), static_cast<std::size_t>(got));
  }
  Json message = Json::parse(received_.substr(0, end));
  received_.erase(0, end + 1);
  return message;
}

void Browser::note(const Json& event) {
  const std::string method = event.value("method", "");
  if (method == "Page.loadEventFired") loaded_ = true;
  if (method == "Runtime.exceptionThrown" || method == "Log.entryAdded" ||
      method == "Runtime.consoleAPICalled")
    complaints_.push_back(event["params"].dump());
  if (method != "Network.requestWillBeSent") return;
  const std::string address = event["params"]["request"]["url"];
  if (address != page_ && !address.starts_with("data:")) fetched_.push_back(address);
}

Json Browser::call(const std::string& method, const Json& parameters) {
  Json message{{"id", ++last_}, {"method", method}, {"params", parameters}};
  if (!session_.empty()) message["sessionId"] = session_;
  const std::string text = message.dump() + '\0';
  if (write(in_, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    throw std::runtime_error("the browser has ended");
  for (;;) {
    const Json answer = next();
    if (answer.value("id", 0) != last_) {
      note(answer);
      continue;
    }
    if (answer.contains("error")) throw std::runtime_error(method + answer["error"].dump());
    return answer["result"];
  }
}

void Browser::open(const std::string& path, const Screen& screen) {
  call("Emulation.setDeviceMetricsOverride", {{"width", screen.width},
                                              {"height", screen.height},
                                              {"deviceScaleFactor", screen.scale},
                                              {"mobile", screen.phone}});
  call("Emulation.setTouchEmulationEnabled", {{"enabled", true}});
  const Json feature{{"name", "prefers-color-scheme"}, {"value", screen.dark ? "dark" : "light"}};
  call("Emulation.setEmulatedMedia", {{"features", Json::array({feature})}});
  page_ = "file://" + path;
  loaded_ = false;
  call("Page.navigate", {{"url", page_}});
  while (!loaded_) note(next());
}

Json Browser::evaluate(const std::string& expression) {
  const Json answer =
      call("Runtime.evaluate",
           {{"expression", expression}, {"returnByValue", true}, {"awaitPromise", true}});
  if (answer.contains("exceptionDetails")) throw std::runtime_error(answer.dump());
  return answer["result"].value("value", Json());
}

void Browser::press(const std::string& key) {
  static const std::map<std::string, int> kCodes{
      {"Tab", 9},   {"Escape", 27},    {"PageUp", 33},  {"PageDown", 34},   {"End", 35},
      {"Home", 36}, {"ArrowLeft", 37}, {"ArrowUp", 38}, {"ArrowRight", 39}, {"ArrowDown", 40}};
  for (const char* type : {"rawKeyDown", "keyUp"})
    call("Input.dispatchKeyEvent",
         {{"type", type}, {"key", key}, {"code", key}, {"windowsVirtualKeyCode", kCodes.at(key)}});
}

void Browser::drag(const std::vector<std::pair<double, double>>& places) {
  const auto send = [this](const char* type, const std::pair<double, double>& place) {
    call("Input.dispatchMouseEvent", {{"type", type},
                                      {"x", place.first},
                                      {"y", place.second},
                                      {"button", "left"},
                                      {"buttons", 1},
                                      {"clickCount", 1}});
  };
  send("mousePressed", places.front());
  for (const auto& place : places) send("mouseMoved", place);
  send("mouseReleased", places.back());
}

void Browser::swipe(const std::vector<std::pair<double, double>>& places) {
  const auto send = [this](const char* type, const Json& points) {
    call("Input.dispatchTouchEvent", {{"type", type}, {"touchPoints", points}});
  };
  const auto point = [](const std::pair<double, double>& place) {
    return Json::array({{{"x", place.first}, {"y", place.second}}});
  };
  // What a finger may do where is known to the browser when it has drawn the page.
  evaluate("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done)))");
  send("touchStart", point(places.front()));
  for (const auto& place : places) send("touchMove", point(place));
  // At rest before it leaves, so that the page does not go on by itself.
  g_usleep(200000);
  send("touchMove", point(places.back()));
  send("touchEnd", Json::array());
}

std::string Browser::screenshot(double x, double y, double width, double height) {
  const Json clip{{"x", x}, {"y", y}, {"width", width}, {"height", height}, {"scale", 1}};
  const Json answer = call("Page.captureScreenshot", {{"format", "png"}, {"clip", clip}});
  gsize size = 0;
  guchar* bytes = g_base64_decode(answer["data"].get<std::string>().c_str(), &size);
  std::string file(reinterpret_cast<const char*>(bytes), size);
  g_free(bytes);
  return file;
}

}  // namespace vx::host_test
