// korv-provider: inspects and certifies modules of masking providers.
#include <cstdio>
#include <exception>

#include "check.h"
#include "inspect.h"
#include "options.h"

int main(int argc, char** argv) {
    try {
        kit::Options options;
        int status = kit::kSound;
        if (!kit::parseOptions(argc, argv, options, status)) return status;
        switch (options.mode) {
            case kit::Mode::inspect:
                return kit::inspect(options);
            case kit::Mode::list:
                return kit::listTests();
            case kit::Mode::check:
                return kit::check(options);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korv-provider: %s\n", error.what());
    }
    return kit::kNotRun;
}
