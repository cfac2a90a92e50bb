// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTargets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::vorbisComment(data, size);
    return 0;
}
