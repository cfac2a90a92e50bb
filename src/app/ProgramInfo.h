// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// Facts about the program and its desktop that the window shows and that
// never change while it runs.
class ProgramInfo : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString version READ version CONSTANT)
    // The landscape behind the first-run welcome: TARNWELL_ONBOARDING_IMAGE_URL
    // or the built-in address.
    Q_PROPERTY(QUrl onboardingImageUrl READ onboardingImageUrl CONSTANT)
    // The desktop shows application menus in a global menu bar.
    Q_PROPERTY(bool hasGlobalMenu READ hasGlobalMenu CONSTANT)

public:
    using QObject::QObject;

    static QString version();
    static QUrl onboardingImageUrl();
    static bool hasGlobalMenu();
};
