// SPDX-License-Identifier: GPL-3.0-or-later
#include "SongFormat.h"

#include <cmath>

QString SongFormat::formatTime(double seconds)
{
    if (!std::isfinite(seconds) || seconds < 0)
        seconds = 0;
    // Beyond this many seconds the text would be nonsense anyway.
    const auto whole = static_cast<long long>(std::min(seconds, 1e15));
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QString SongFormat::songCount(int count)
{
    return QString::number(count) + (count == 1 ? QStringLiteral(" song") : QStringLiteral(" songs"));
}
