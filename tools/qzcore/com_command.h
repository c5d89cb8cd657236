// com_command.h - `qzcore com`: registering a component library under its class identifier, and
// creating an object of a registered class.
#pragma once

namespace qztool {

// argv[0] is "com". Exit code 0 on success, 1 when the library refused, 2 for a bad command line.
int RunCom(int argc, char** argv);

}  // namespace qztool
