// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// How the screens write lengths and counts.
class SongFormat : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // "m:ss" with whole seconds (the fraction dropped) and minutes past 59
    // ("75:03"); negative and non-finite values read as 0:00.
    Q_INVOKABLE static QString formatTime(double seconds);
    // "1 song", "12 songs".
    Q_INVOKABLE static QString songCount(int count);
};
