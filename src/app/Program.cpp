// SPDX-License-Identifier: GPL-3.0-or-later
#include "Program.h"

#include "AppState.h"
#include "SingleInstance.h"
#include "artwork/ArtworkImageProvider.h"
#include "artwork/DrawnPictures.h"
#include "model/LocalPath.h"
#include "model/Log.h"
#include "playback/MprisService.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QGuiApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace {

// Whether this session can draw with a graphics card: a render node it may
// open, and no request for software OpenGL.
bool hasGraphicsCard()
{
    if (qEnvironmentVariableIntValue("LIBGL_ALWAYS_SOFTWARE") != 0)
        return false;
    const QDir dri(QStringLiteral("/dev/dri"));
    const QStringList nodes = dri.entryList({QStringLiteral("renderD*")}, QDir::System);
    return std::any_of(nodes.cbegin(), nodes.cend(), [&dri](const QString &node) {
        return ::access(QFile::encodeName(dri.filePath(node)).constData(), R_OK | W_OK) == 0;
    });
}

// Without a graphics card, OpenGL is a software rasterizer (Mesa's llvmpipe
// under Xvfb, in virtual machines and remote sessions): some 60 MB of LLVM in
// memory and the whole window redrawn each frame. Qt Quick's own software
// renderer redraws only what changed, and everything Tarnwell shows is drawn
// without shaders. A renderer the user asked for (QT_QUICK_BACKEND,
// QSG_RHI_BACKEND) is kept. Before the application is made; answers whether
// it set QT_XCB_GL_INTEGRATION.
bool chooseRenderer()
{
    if (qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND")
        || hasGraphicsCard())
        return false;
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // The X11 platform would otherwise load OpenGL when it starts.
    if (qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        return false;
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    return true;
}

void raiseOnRequest(QQuickWindow *window, MprisService &mpris)
{
    mpris.setCanRaise(true);
    QObject::connect(&mpris, &MprisService::raiseRequested, window, [window] {
        window->show();
        window->raise();
        window->requestActivate();
    });
}

} // namespace

namespace program {

int run(int argc, char **argv, const WindowHook &onWindow)
{
    QCoreApplication::setApplicationName(QStringLiteral("Tarnwell"));
    QCoreApplication::setOrganizationName(QStringLiteral("Tarnwell"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TARNWELL_VERSION));

    // The command line is read before the window system is asked for, so that
    // --help and --version work without a display.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tarnwell plays the music in your own folders."));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("folder"),
                                 QStringLiteral("Music folders to import; a song given plays once its folder is in."),
                                 QStringLiteral("[FOLDER|FILE...]"));
    // Unknown options may be Qt's own (-platform, -style...): they are judged
    // once QGuiApplication has taken those out.
    parser.parse(arguments);
    if (parser.isSet(helpOption)) {
        QString help = parser.helpText();
        help.replace(QStringLiteral("<executable_name>"), QStringLiteral("tarnwell"));
        std::fputs(qPrintable(help), stdout);
        return 0;
    }
    if (parser.isSet(versionOption)) {
        std::printf("tarnwell %s\n", TARNWELL_VERSION);
        return 0;
    }

    const bool glTurnedOff = chooseRenderer();
    QGuiApplication app(argc, argv);
    // Programs Tarnwell opens (a file manager) get the environment it was given.
    if (glTurnedOff)
        qunsetenv("QT_XCB_GL_INTEGRATION");
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tarnwell"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.tarnwell.tarnwell"));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/Tarnwell/tarnwell.svg")));
    // Qt has taken its own options out of argv by now. Read from argv itself:
    // QCoreApplication::arguments() would lose names that aren't UTF-8.
    arguments.clear();
    for (int i = 0; i < argc; ++i)
        arguments.append(localpath::fromBytes(argv[i]));
    parser.process(arguments);
    const QList<QUrl> openUrls
        = SingleInstance::urlsFrom(parser.positionalArguments(), localpath::absolute(QStringLiteral(".")));
    // A Tarnwell already running takes the arguments instead.
    SingleInstance instance;
    if (!instance.claim() && instance.handOff(openUrls))
        return 0;

    QFont font(QStringLiteral("Inter"));
    font.setPixelSize(13);
    QGuiApplication::setFont(font);
    // Menus and dialogs take their colours from the window's palette, which
    // follows the theme.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_CONTROLS_STYLE"))
        QQuickStyle::setStyle(QStringLiteral("Fusion"));

    AppState state(nullptr);
    AppState::setInstance(&state);
    state.importLibraryFolders();
    app.installEventFilter(state.keyPressFilter());

    QQmlApplicationEngine engine;
    engine.addImageProvider(QStringLiteral("artwork"), new ArtworkImageProvider(&state.artworkLoader()));
    engine.addImageProvider(QStringLiteral("shadow"), new ShadowImageProvider);
    QObject::connect(&engine, &QQmlApplicationEngine::objectCreationFailed, &app,
                     [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
    engine.load(QUrl(QStringLiteral("qrc:/Tarnwell/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;

    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    if (window)
        raiseOnRequest(window, state.mpris());
    // Without a session bus the window still plays and pauses (the space
    // bar), but media keys and the desktop's media controls can't reach it.
    if (!state.mpris().registerOnBus())
        qCInfo(lcApp) << "no media keys: the session bus is not available";
    if (window && onWindow)
        onWindow(window, state);
    // Folders and songs from the command line, or from later starts, are
    // opened once the window is up.
    instance.attach(state, window);
    instance.open(openUrls);
    return app.exec();
}

} // namespace program
