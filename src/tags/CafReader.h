// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ContainerReader.h"

#include <QByteArrayView>

// Core Audio Format: "caff", version, flags, then chunks of a 4-byte type, a
// 64-bit big-endian size and the body. Tags live in "info" chunks (a count, then
// NUL-terminated UTF-8 key and value pairs); "desc", "pakt" and "data" give the
// duration. Only the chunk headers and the small chunks are read.
namespace caf {

struct Info
{
    QList<container::Item> items; // the info entries in file order
    std::optional<double> duration;
};

Info parse(QByteArrayView fileBytes);
Info readFile(const QString &path);

} // namespace caf
