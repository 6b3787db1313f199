// What to say to a command line that cannot be understood.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vx::cli {

/// The nearest right command or option for a misspelt one, a whole command line for a picture
/// without a command; empty where nothing better is known than what the parser says. `program` has
/// refused `arguments`.
std::string advice(const CLI::App& program, const std::vector<std::string>& arguments);

}  // namespace vx::cli
