// A headless Chromium, spoken to through two pipes in the protocol of its developer tools. Its
// keys, mouse and touches are those of a user: pages cannot tell them from real ones.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace vx::host_test {

using Json = nlohmann::json;

class Browser {
 public:
  struct Screen {
    int width, height;  // CSS pixels
    double scale;       // pixels of the screen for each
    bool phone, dark;
  };

  /// The program; empty where there is none.
  static std::string program();

  /// `folder` is empty and its own. Throws std::runtime_error, here and below, for what the browser
  /// refuses or does not answer within a minute.
  explicit Browser(const std::string& folder);
  ~Browser();
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;

  /// Shows a file and returns when all of it is loaded.
  void open(const std::string& path, const Screen& screen);
  /// The value of an expression in the page.
  Json evaluate(const std::string& expression);
  void press(const std::string& key);
  /// Presses the left button at the first place and lets it go at the last.
  void drag(const std::vector<std::pair<double, double>>& places);
  void click(double x, double y) { drag({{x, y}}); }
  /// The same with a finger.
  void swipe(const std::vector<std::pair<double, double>>& places);
  /// The bytes of a PNG file that shows a part of the window, in pixels of the screen.
  std::string screenshot(double x, double y, double width, double height);

  /// Errors and warnings of all pages so far.
  const std::vector<std::string>& complaints() const { return complaints_; }
  /// What they asked for but the pages themselves and data: addresses.
  const std::vector<std::string>& fetched() const { return fetched_; }

 private:
  Json call(const std::string& method, const Json& parameters = Json::object());
  Json next();
  void note(const Json& event);

  int process_ = -1, in_ = -1, out_ = -1, last_ = 0;
  std::string session_, page_, received_;
  bool loaded_ = false;
  std::vector<std::string> complaints_, fetched_;
};

}  // namespace vx::host_test
