// SPDX-License-Identifier: GPL-3.0-or-later
#include "OnlineFuzzTargets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    onlinefuzz::updateFeed(data, size);
    return 0;
}
