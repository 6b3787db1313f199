// Text for a page: safe wherever it came from, and put into templates.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace vx::cli {

/// A text that stands for itself in HTML, between tags and in quoted attributes. Bytes that are not
/// UTF-8 become U+FFFD.
std::string escaped(std::string_view text);

/// The template with each {{name}} replaced by its value, which is not looked into. Throws
/// std::logic_error for a name that has none.
std::string filled(std::string_view text,
                   std::initializer_list<std::pair<std::string_view, std::string>> values);

std::string base64(std::span<const std::uint8_t> bytes);

/// As a content security policy names a script or style.
std::string sha256InBase64(std::string_view text);

}  // namespace vx::cli
