// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"
#include "artwork/ArtworkImageProvider.h"

#include <QCoreApplication>
#include <QQmlEngine>
#include <QQmlEngineExtensionPlugin>
#include <QSettings>
#include <QtQuickTest>

Q_IMPORT_QML_PLUGIN(TarnwellPlugin)

class Setup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable()
    {
        QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
        QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
        QSettings settings;
        settings.clear();
        settings.setValue(QStringLiteral("didCompleteOnboarding"), true);
    }

    // Each test file gets its own engine, main state and picture provider.
    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->addImportPath(QStringLiteral("qrc:/"));
        auto *state = new AppState(engine);
        AppState::setInstance(state);
        engine->addImageProvider(QStringLiteral("artwork"), new ArtworkImageProvider(&state->artworkLoader()));
    }
};

QUICK_TEST_MAIN_WITH_SETUP(tarnwell_qml, Setup)
#include "tst_qml.moc"
