// SPDX-License-Identifier: GPL-3.0-or-later
#include "TagMemo.h"

#include <QHash>
#include <QReadLocker>
#include <QReadWriteLock>
#include <QStringList>
#include <QWriteLocker>

namespace {

// Files are known by a 64-bit hash of their path rather than the path itself,
// which the library already holds: a hundred thousand songs cost 16 bytes each here.
size_t keyOf(const QString &path)
{
    return qHash(path, size_t(0x7a3d5c1e9b24f608));
}

} // namespace

struct TagMemo::State
{
    // Positions in `strings` plus one; 0 is an absent tag.
    struct Tags
    {
        quint32 artist = 0;
        quint32 album = 0;
        bool hasPicture = false;
    };

    MetadataReader fileReader;
    mutable QReadWriteLock lock;
    QHash<size_t, Tags> tags;
    QStringList strings;
    QHash<QString, quint32> stringIds;

    // Called with the write lock held.
    quint32 interned(const std::optional<QString> &text)
    {
        if (!text)
            return 0;
        auto it = stringIds.constFind(*text);
        if (it == stringIds.constEnd()) {
            strings.append(*text);
            it = stringIds.insert(*text, quint32(strings.size()));
        }
        return *it;
    }

    // Called with a lock held.
    TrackMetadata metadata(Tags kept) const
    {
        const auto text = [this](quint32 id) {
            return id == 0 ? std::nullopt : std::optional<QString>(strings.at(id - 1));
        };
        return { std::nullopt, text(kept.artist), text(kept.album), std::nullopt, kept.hasPicture };
    }

    TrackMetadata read(const QString &path)
    {
        const size_t key = keyOf(path);
        {
            const QReadLocker locker(&lock);
            const auto it = tags.constFind(key);
            if (it != tags.constEnd())
                return metadata(*it);
        }
        const TrackMetadata file = fileReader(path);
        const QWriteLocker locker(&lock);
        const Tags kept { interned(file.artist), interned(file.album), file.hasPicture };
        tags.insert(key, kept);
        return metadata(kept);
    }
};

TagMemo::TagMemo(MetadataReader fileReader)
    : d(std::make_shared<State>())
{
    d->fileReader = std::move(fileReader);
}

MetadataReader TagMemo::reader() const
{
    return [d = d](const QString &path) { return d->read(path); };
}

void TagMemo::forget(const QString &path)
{
    const QWriteLocker locker(&d->lock);
    d->tags.remove(keyOf(path));
}

qsizetype TagMemo::size() const
{
    const QReadLocker locker(&d->lock);
    return d->tags.size();
}
