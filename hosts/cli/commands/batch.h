// Runs the jobs of one command line: reads, processes and writes each picture.
#pragma once

#include "hosts/cli/commands/treat_picture.h"

namespace vx::cli {

/// Processes every picture; a failure is reported in one line on stderr and does not stop the
/// others. Several at a time where that is asked for; messages and results come in the order of the
/// pictures all the same. Returns the exit code. Throws UsageError before anything has been
/// written, also where `neutral` settings would code a picture again and do nothing else.
int runBatch(const FileOptions& options, const Treatment& treatment, bool neutral);

}  // namespace vx::cli
