#include "hosts/cli/console/error.h"

#include <system_error>

namespace vx::cli {

std::string systemReason(int error) { return std::generic_category().message(error); }

}  // namespace vx::cli
