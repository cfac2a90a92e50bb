// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlEngineExtensionPlugin>

Q_IMPORT_QML_PLUGIN(TarnwellPlugin)

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Tarnwell"));
    QGuiApplication::setOrganizationName(QStringLiteral("Tarnwell"));
    QGuiApplication::setApplicationVersion(QStringLiteral(TARNWELL_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("tarnwell"));

    QQmlApplicationEngine engine;
    QObject::connect(&engine, &QQmlApplicationEngine::objectCreationFailed, &app,
                     [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
    engine.load(QUrl(QStringLiteral("qrc:/Tarnwell/Main.qml")));
    return app.exec();
}
