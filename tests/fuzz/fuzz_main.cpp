// SPDX-License-Identifier: GPL-3.0-or-later
// One libFuzzer entry point, built once per target with FUZZ_TARGET naming it.
#include "OnlineFuzzTargets.h"

#include <cstring>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const auto run = [] {
        using Targets = std::span<const fuzz::Target>;
        for (const Targets list : { Targets(fuzz::targets), Targets(onlinefuzz::targets) })
            for (const fuzz::Target &t : list)
                if (std::strcmp(t.name, FUZZ_TARGET) == 0)
                    return t.run;
        __builtin_trap();
    }();
    run(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    return 0;
}
