// SPDX-License-Identifier: GPL-3.0-or-later
#include "ProgramInfo.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

QString ProgramInfo::version()
{
    return QStringLiteral(TARNWELL_VERSION);
}

QUrl ProgramInfo::onboardingImageUrl()
{
    const QByteArray fromEnv = qgetenv("TARNWELL_ONBOARDING_IMAGE_URL");
    if (!fromEnv.isEmpty())
        return QUrl(QString::fromUtf8(fromEnv));
    return QUrl(QStringLiteral(
        "https://images.unsplash.com/photo-1506905925346-21bda4d32df4?w=1920&q=80&fm=jpg"));
}

bool ProgramInfo::hasGlobalMenu()
{
    // Qt exports menus to a global menu bar through this registrar.
    static const bool available = [] {
        QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
        return bus && bus->isServiceRegistered(QStringLiteral("com.canonical.AppMenu.Registrar")).value();
    }();
    return available;
}
