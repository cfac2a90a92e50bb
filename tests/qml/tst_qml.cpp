// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"
#include "artwork/ArtworkImageProvider.h"
#include "browse/ArtistDetail.h"
#include "browse/ArtistListModel.h"
#include "browse/SongListModel.h"
#include "model/LocalPath.h"
#include "support/TestSupport.h"

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QHash>
#include <QMutex>
#include <QQmlEngine>
#include <QQmlEngineExtensionPlugin>
#include <QSettings>
#include <QTemporaryDir>
#include <QtQuickTest>

#include <memory>
#include <vector>

Q_IMPORT_QML_PLUGIN(TarnwellPlugin)

// The models the screens take, filled from the tests: songs and artists of
// files that don't exist, whose tags the tests give (import TarnwellTest).
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

    // An artists grid whose songs' tags come from load().
    Q_INVOKABLE ArtistListModel *artists() { return kept(new ArtistListModel(reader(), this)); }
    // Groups [[name, songs], ...]: that many songs by each artist. The model
    // is loading until the next turn of the event loop.
    Q_INVOKABLE void load(ArtistListModel *model, const QVariantList &artists)
    {
        QList<Track> tracks;
        for (const QVariant &artist : artists) {
            const QVariantList pair = artist.toList();
            for (int i = 0; i < pair.value(1).toInt(); ++i) {
                const Track track = Track::create(
                    localpath::fileUrl(QStringLiteral("/nowhere/%1 %2.flac").arg(m_tags->size()).arg(i)));
                TrackMetadata meta;
                meta.artist = pair.value(0).toString();
                QMutexLocker lock(&m_tags->mutex);
                m_tags->byPath.insert(track.path(), meta);
                tracks.append(track);
            }
        }
        model->load(tracks);
    }
    Q_INVOKABLE ArtistDetail *detail() { return kept(new ArtistDetail(reader(), this)); }

    // Writes [[artist, songs], ...] as short songs with that artist tag into one
    // folder of this test file, next to what earlier calls wrote; answers the folder.
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
    // A new folder holding short silent songs of these names, and a
    // folder.jpg when asked; its file URL.
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

    struct Tags
    {
        QMutex mutex;
        QHash<QString, TrackMetadata> byPath;
        qsizetype size()
        {
            QMutexLocker lock(&mutex);
            return byPath.size();
        }
    };
    MetadataReader reader() const
    {
        return [tags = m_tags](const QString &path) {
            QMutexLocker lock(&tags->mutex);
            return tags->byPath.value(path);
        };
    }

    std::shared_ptr<Tags> m_tags = std::make_shared<Tags>();
    std::vector<std::unique_ptr<QTemporaryDir>> m_folders;
    QTemporaryDir m_playlists;
};

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
    }
};

QUICK_TEST_MAIN_WITH_SETUP(tarnwell_qml, Setup)
#include "tst_qml.moc"
