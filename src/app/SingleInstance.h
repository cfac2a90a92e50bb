// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One Tarnwell per desktop session. The first start owns the name
// org.tarnwell.tarnwell on the session bus and answers the standard
// org.freedesktop.Application interface there; a later start hands its folders
// and files to it and exits.
//
//   tarnwell ARG...
//     └─ urlsFrom ─► claim() ── name taken ──► handOff: Open(uris) or Activate ──► exit
//                      │ name ours, or no session bus
//                      ▼
//   Open / Activate from the bus ──┐
//   the command line ──────────────┴─► open(): waits for the window's first frame, then
//        Library::importFolders(planOpen(urls).folders)
//        Library::folderImported(the song's folder) ─► NowPlaying::play(the song)
//   Activate, Open ─► the window is shown and raised

#include <QDBusContext>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <optional>

class AppState;
class QQuickWindow;

// What opening some folders and files means for the library: the folders are
// imported, each song's folder too unless a folder given holds it, and the
// first song plays once its folder is in.
struct OpenPlan
{
    QList<QUrl> folders;
    std::optional<QUrl> song;
    // The folder of `folders` whose import brings the song in.
    QUrl songFolder;
};

class SingleInstance : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    static constexpr const char *serviceName = "org.tarnwell.tarnwell";
    static constexpr const char *objectPath = "/org/tarnwell/tarnwell";

    explicit SingleInstance(QObject *parent = nullptr);
    ~SingleInstance() override;

    // Takes the name on the session bus; false when another Tarnwell holds it.
    // Without a session bus every start runs on its own.
    bool claim();
    // Gives the running Tarnwell these folders and files (or, with none, asks it
    // to come forward). False when it does not answer: this start then runs on
    // its own, with the name if the other one has quit.
    bool handOff(const QList<QUrl> &urls);

    // Requests are carried out on this state and window from the window's
    // first frame on; earlier ones wait for it.
    void attach(AppState &state, QQuickWindow *window);
    void open(const QList<QUrl> &urls);
    // Shows and raises the window; `platformData` may carry the desktop's
    // activation token.
    void activate(const QVariantMap &platformData = {});

    // The command line's folders and songs as file URLs, relative paths taken
    // from `workingFolder`; anything else is reported on stderr and skipped.
    static QList<QUrl> urlsFrom(const QStringList &arguments, const QString &workingFolder);
    static OpenPlan planOpen(const QList<QUrl> &urls);

public Q_SLOTS:
    // org.freedesktop.Application
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);
    Q_SCRIPTABLE void ActivateAction(
        const QString &name, const QVariantList &parameter, const QVariantMap &platformData);

private:
    void onFolderImported(const QUrl &folder);
    bool playIfInLibrary(const QUrl &song);

    bool m_registered = false;
    AppState *m_state = nullptr;
    QPointer<QQuickWindow> m_window;
    bool m_ready = false;
    QList<QList<QUrl>> m_pending;
    // The song to play once `m_songFolder` has been imported.
    std::optional<QUrl> m_song;
    QUrl m_songFolder;
};
