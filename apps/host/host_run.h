#pragma once

#include "host/host_options.h"

#include <QTextStream>

namespace varo::host {

/// Opens the host's window and does what the options ask for: with --screenshot or --quit it writes
/// what the control shows to `out` and ends, else it serves the user until the window is closed.
/// Returns the exit code: 0 done; 1 the control did not start without a message, or the picture
/// could not be written, which `err` tells. Throws UsageError for keys and variables that the
/// libraries do not have.
int runHost(const HostOptions& options, QTextStream& out, QTextStream& err);

}  // namespace varo::host
