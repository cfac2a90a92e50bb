// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"
#include "artwork/ArtworkImageProvider.h"
#include "artwork/DrawnPictures.h"
#include "browse/SongListModel.h"
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QImage>
#include <QQmlEngine>
#include <QQmlEngineExtensionPlugin>
#include <QSettings>
#include <QTemporaryDir>
#include <QtQuickTest>

#include <memory>
#include <vector>

Q_IMPORT_QML_PLUGIN(TarnwellPlugin)

// Songs and folders for the screens under test (import TarnwellTest).
class Fixtures : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // [{trackId, path}] in that order; no file is read.
    Q_INVOKABLE SongListModel *songs(const QVariantList &rows)
    {
        auto *model = kept(new SongListModel([](const QString &) { return FileTags{}; }, this));
        QList<Track> tracks;
        for (const QVariant &row : rows) {
            const QVariantMap map = row.toMap();
            Track track;
            track.id = QUuid(map.value(QStringLiteral("trackId")).toString());
            track.url = localpath::fileUrl(map.value(QStringLiteral("path")).toString());
            tracks.append(track);
        }
        model->setTracks(tracks);
        return model;
    }

    // Short songs, [[artist, count], ...], added to one folder; its URL.
    Q_INVOKABLE QUrl writeSongs(const QVariantList &artists)
    {
        for (const QVariant &artist : artists) {
            const QString name = artist.toList().value(0).toString();
            for (int i = 0; i < artist.toList().value(1).toInt(); ++i) {
                const QString path = m_folder.filePath(QStringLiteral("%1 %2.flac").arg(++m_written).arg(name));
                if (!testsupport::makeAudio(path, 0.1)
                    || testsupport::run(QStringLiteral("metaflac"), {QStringLiteral("--set-tag=ARTIST=") + name, path}).exitCode)
                    qFatal("cannot write %s", qPrintable(path));
            }
        }
        return localpath::fileUrl(m_folder.path());
    }
    // A new folder of silent songs of these names, with a folder.jpg when asked.
    Q_INVOKABLE QUrl folderOfSongs(const QStringList &names, bool withFolderImage = false)
    {
        auto *dir = new QTemporaryDir;
        m_folders.emplace_back(dir);
        for (const QString &name : names) {
            if (!testsupport::makeAudio(dir->filePath(name)))
                qWarning() << "could not make" << name;
        }
        if (withFolderImage) {
            QImage image(64, 64, QImage::Format_RGB32);
            image.fill(Qt::darkCyan);
            image.save(dir->filePath(QStringLiteral("folder.jpg")));
        }
        return localpath::fileUrl(dir->path());
    }
    Q_INVOKABLE bool makeReadOnly(const QUrl &file)
    {
        return QFile::setPermissions(localpath::pathOf(file), QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    }
    // The id of the library's song at a file URL; empty when none.
    Q_INVOKABLE QString songAt(Library *library, const QUrl &file) const
    {
        for (const Track &track : library->tracks()) {
            if (track.url == file)
                return trackjson::uuidText(track.id);
        }
        return {};
    }
    // The program started again: a main state of its own over the same settings.
    Q_INVOKABLE AppState *secondLaunch()
    {
        return kept(new AppState(m_playlists.filePath(QStringLiteral("playlists.json")), this));
    }

private:
    QTemporaryDir m_folder;
    int m_written = 0;

    template<typename T>
    static T *kept(T *object)
    {
        QQmlEngine::setObjectOwnership(object, QQmlEngine::CppOwnership);
        return object;
    }

    std::vector<std::unique_ptr<QTemporaryDir>> m_folders;
    QTemporaryDir m_playlists;
};

class Setup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable()
    {
        QSettings settings;
        settings.clear();
        settings.setValue(QStringLiteral("didCompleteOnboarding"), true);
        qmlRegisterSingletonType<Fixtures>("TarnwellTest", 1, 0, "Fixtures",
                                           [](QQmlEngine *engine, QJSEngine *) { return new Fixtures(engine); });
    }

    // Each test file gets its own engine, main state and picture provider.
    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->addImportPath(QStringLiteral("qrc:/"));
        auto *state = new AppState(engine);
        AppState::setInstance(state);
        engine->addImageProvider(QStringLiteral("artwork"), new ArtworkImageProvider(&state->artworkLoader()));
        engine->addImageProvider(QStringLiteral("shadow"), new ShadowImageProvider);
    }
};

QUICK_TEST_MAIN_WITH_SETUP(tarnwell_qml, Setup)
#include "tst_qml.moc"
