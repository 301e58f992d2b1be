// morvanectl: calls the preset service, and says what the daemon makes of definition files and
// preset data files.

#include "command_line.h"

int main(int argc, char** argv) {
    return static_cast<int>(morvane::ctl::runCommandLine(argc, argv));
}
