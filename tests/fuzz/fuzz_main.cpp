// SPDX-License-Identifier: GPL-3.0-or-later
// One libFuzzer entry point, built once per target with FUZZ_TARGET naming it.
#include "FuzzTargets.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const auto run = [] {
        for (const fuzz::Target &t : fuzz::targets) {
            if (std::strcmp(t.name, FUZZ_TARGET) == 0)
                return t.run;
        }
        __builtin_trap();
    }();
    run(data, size);
    return 0;
}
