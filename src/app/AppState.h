// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The main state of the window: the library, what plays, where the user is,
// and the services that feed them. Screens read it and call its operations.

#include <QObject>
#include <QtQml/qqmlregistration.h>

class AppState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppState is created by the program")

public:
    explicit AppState(QObject *parent = nullptr);
};
