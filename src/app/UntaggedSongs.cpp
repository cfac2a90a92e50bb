// SPDX-License-Identifier: GPL-3.0-or-later
#include "UntaggedSongs.h"

#include "TagEditorSession.h"

#include "model/Log.h"
#include "model/TextUtil.h"
#include "tags/TagReader.h"
#include "tags/TagWriter.h"

#include <QPointer>
#include <QtConcurrent>

namespace {

bool missing(const std::optional<QString> &value)
{
    return !value || value->isEmpty();
}

std::optional<QString> typed(const QString &text)
{
    return text.isEmpty() ? std::nullopt : std::optional<QString>(text);
}

FieldEdit editOf(const std::optional<QString> &value)
{
    return value ? FieldEdit::set(*value) : FieldEdit::keep();
}

} // namespace

UntaggedSongs::UntaggedSongs(QObject *parent)
    : QAbstractListModel(parent)
{
}

bool UntaggedSongs::isUntagged(const TrackMetadata &meta)
{
    return missing(meta.title) || missing(meta.artist) || missing(meta.album);
}

QString UntaggedSongs::missingFieldsLabel(const std::optional<TrackMetadata> &meta)
{
    QStringList names;
    if (!meta || missing(meta->title))
        names.append(QStringLiteral("title"));
    if (!meta || missing(meta->artist))
        names.append(QStringLiteral("artist"));
    if (!meta || missing(meta->album))
        names.append(QStringLiteral("album"));
    return QStringLiteral("Missing: ") + names.join(QStringLiteral(", "));
}

QString UntaggedSongs::savedMessage(int files)
{
    return QStringLiteral("Saved to %1 file%2").arg(files).arg(files == 1 ? QString() : QStringLiteral("s"));
}

void UntaggedSongs::load(const QList<Track> &tracks)
{
    const quint64 generation = ++m_generation;
    beginResetModel();
    m_tracks = tracks;
    m_metadata.clear();
    m_rows.clear();
    m_selected.clear();
    m_editing.clear();
    endResetModel();
    m_showEditor = false;
    m_saveError.clear();
    m_loading = true;
    m_message.clear();
    Q_EMIT rowsChanged();
    Q_EMIT selectionChanged();
    Q_EMIT editorChanged();
    Q_EMIT isLoadingChanged();

    QStringList paths;
    paths.reserve(tracks.size());
    for (const Track &t : tracks)
        paths.append(t.path());
    QPointer<UntaggedSongs> self(this);
    QtConcurrent::mapped(std::move(paths), [](const QString &path) { return readMetadata(path); })
        .then(this, [self, generation, tracks](QFuture<TrackMetadata> done) {
            if (!self || generation != self->m_generation)
                return;
            const QList<TrackMetadata> all = done.results();
            for (qsizetype i = 0; i < all.size() && i < tracks.size(); ++i)
                self->m_metadata.insert(tracks.at(i).id, all.at(i));
            self->m_loading = false;
            self->rebuildRows();
            Q_EMIT self->isLoadingChanged();
            qCDebug(lcApp).nospace() << "untagged: " << self->m_rows.size() << " songs missing tags";
        });
}

void UntaggedSongs::rebuildRows()
{
    QList<Track> rows;
    for (const Track &t : std::as_const(m_tracks)) {
        const auto it = m_metadata.constFind(t.id);
        if (it != m_metadata.cend() && isUntagged(*it))
            rows.append(t);
    }
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    Q_EMIT rowsChanged();
}

std::optional<TrackMetadata> UntaggedSongs::metadata(const QUuid &id) const
{
    const auto it = m_metadata.constFind(id);
    return it == m_metadata.cend() ? std::nullopt : std::optional<TrackMetadata>(*it);
}

void UntaggedSongs::toggleSelection(const QString &trackId)
{
    const std::optional<QUuid> id = trackjson::parseUuid(trackId);
    if (!id)
        return;
    if (!m_selected.remove(*id))
        m_selected.insert(*id);
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        if (m_rows.at(i).id == *id)
            Q_EMIT dataChanged(index(int(i)), index(int(i)), {SelectedRole});
    }
    Q_EMIT selectionChanged();
}

void UntaggedSongs::toggleSelectAll()
{
    // Compares counts, as the button's label does.
    if (m_selected.size() != m_rows.size()) {
        m_selected.clear();
        for (const Track &t : std::as_const(m_rows))
            m_selected.insert(t.id);
    } else {
        m_selected.clear();
    }
    if (!m_rows.isEmpty())
        Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1), {SelectedRole});
    Q_EMIT selectionChanged();
}

void UntaggedSongs::editSelected()
{
    m_editing.clear();
    for (const Track &t : std::as_const(m_rows)) {
        if (m_selected.contains(t.id))
            m_editing.append(t);
    }
    openEditor();
}

void UntaggedSongs::openEditor()
{
    m_showEditor = true;
    m_saveError.clear();
    Q_EMIT editorChanged();
    qCDebug(lcApp).nospace() << "untagged: editing " << m_editing.size() << " songs";
}

void UntaggedSongs::editOne(const QString &trackId)
{
    const std::optional<QUuid> id = trackjson::parseUuid(trackId);
    for (const Track &t : std::as_const(m_rows)) {
        if (id && t.id == *id) {
            m_editing = {t};
            openEditor();
            return;
        }
    }
}

void UntaggedSongs::closeEditor()
{
    if (!m_showEditor)
        return;
    m_showEditor = false;
    m_saveError.clear();
    Q_EMIT editorChanged();
}

QString UntaggedSongs::editingFileName() const
{
    return m_editing.size() == 1 ? text::displayName(m_editing.constFirst().path()) : QString();
}

QVariantMap UntaggedSongs::initialValues() const
{
    QVariantMap values{{QStringLiteral("title"), QString()},
                       {QStringLiteral("artist"), QString()},
                       {QStringLiteral("album"), QString()}};
    if (m_editing.size() != 1)
        return values;
    if (const std::optional<TrackMetadata> meta = metadata(m_editing.constFirst().id)) {
        values[QStringLiteral("title")] = meta->title.value_or(QString());
        values[QStringLiteral("artist")] = meta->artist.value_or(QString());
        values[QStringLiteral("album")] = meta->album.value_or(QString());
    }
    return values;
}

void UntaggedSongs::saveBatch(const QString &title, const QString &artist, const QString &album)
{
    if (m_saving)
        return;
    const std::optional<QString> newTitle = typed(title);
    const std::optional<QString> newArtist = typed(artist);
    const std::optional<QString> newAlbum = typed(album);
    // A field left empty keeps what each file has, which is what the screen read.
    const TagEdit edit{editOf(newTitle), editOf(newArtist), editOf(newAlbum)};
    const QList<Track> songs = m_editing;
    m_saving = true;
    m_savedSoFar = 0;
    Q_EMIT savingChanged();

    QPointer<UntaggedSongs> self(this);
    QtConcurrent::run([self, songs, edit] {
        // Small groups: the files of a group are flushed to disk together, and
        // the window hears of the progress after each group.
        constexpr qsizetype group = 16;
        Outcome outcome;
        QList<QUuid> &saved = outcome.saved;
        for (qsizetype start = 0; start < songs.size(); start += group) {
            QStringList paths;
            const QList<Track> part = songs.mid(start, group);
            for (const Track &t : part)
                paths.append(t.path());
            const QList<SaveResult> results = saveTags(paths, edit);
            for (qsizetype i = 0; i < results.size(); ++i) {
                if (results.at(i)) {
                    saved.append(part.at(i).id);
                    outcome.savedSongs.append(part.at(i));
                }
                else
                    outcome.failures.append(TagEditorSession::failureMessage(paths.at(i), results.at(i)));
            }
            const int count = int(saved.size());
            QMetaObject::invokeMethod(qApp, [self, count] {
                if (self && self->m_saving) {
                    self->m_savedSoFar = count;
                    Q_EMIT self->savingChanged();
                }
            });
        }
        return outcome;
    }).then(this, [this, newTitle, newArtist, newAlbum](const Outcome &outcome) {
        finishSave(outcome, newTitle, newArtist, newAlbum);
    });
}

void UntaggedSongs::finishSave(const Outcome &outcome, const std::optional<QString> &title,
                               const std::optional<QString> &artist, const std::optional<QString> &album)
{
    const QList<QUuid> &saved = outcome.saved;
    for (const QUuid &id : saved) {
        TrackMetadata &meta = m_metadata[id];
        if (title)
            meta.title = title;
        if (artist)
            meta.artist = artist;
        if (album)
            meta.album = album;
    }
    m_saving = false;
    m_saveError = outcome.failures.join(u'\n');
    // With files left unsaved the editor stays, with what was typed, to try again.
    if (outcome.failures.isEmpty()) {
        m_selected.clear();
        m_showEditor = false;
    }
    rebuildRows();
    Q_EMIT savingChanged();
    Q_EMIT selectionChanged();
    Q_EMIT editorChanged();
    if (!outcome.savedSongs.isEmpty())
        Q_EMIT tagsWritten(outcome.savedSongs);
    Q_EMIT saveFinished(int(saved.size()));
    qCDebug(lcApp).nospace() << "untagged: saved " << saved.size() << " files, " << m_rows.size()
                             << " songs left";
    if (saved.isEmpty())
        return;
    m_message.show(savedMessage(int(saved.size())), Banner::Animation::Default, messageMs);
}

int UntaggedSongs::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant UntaggedSongs::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Track &t = m_rows.at(index.row());
    switch (role) {
    case TrackIdRole:
        return trackjson::uuidText(t.id);
    case Qt::DisplayRole:
    case NameRole:
        return text::displayName(t.path());
    case MissingRole:
        return missingFieldsLabel(metadata(t.id));
    case SelectedRole:
        return m_selected.contains(t.id);
    default:
        return {};
    }
}

QHash<int, QByteArray> UntaggedSongs::roleNames() const
{
    return {{TrackIdRole, "trackId"}, {NameRole, "name"}, {MissingRole, "missing"}, {SelectedRole, "isSelected"}};
}
