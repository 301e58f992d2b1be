#include "data_file.h"

#include "problem.h"

#include <sys/stat.h>

namespace morvane::ctl {

OwnedStream openDataFile(const std::string& file) {
    struct stat status {};
    OwnedStream stream;
    if (stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode)) // a FIFO would block
        stream.reset(std::fopen(file.c_str(), "r"));
    if (!stream)
        fail("cannot read " + file);
    return stream;
}

} // namespace morvane::ctl
