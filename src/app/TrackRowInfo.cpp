// SPDX-License-Identifier: GPL-3.0-or-later
#include "TrackRowInfo.h"

#include "tags/TagReader.h"

#include <QPointer>
#include <QtConcurrent>

#include <cmath>

void TrackRowInfo::setPath(const QString &path)
{
    if (path == m_path)
        return;
    m_path = path;
    Q_EMIT pathChanged();
    const quint64 request = ++m_request;
    if (m_duration != 0 || !m_artist.isEmpty()) {
        m_duration = 0;
        m_artist.clear();
        Q_EMIT loaded();
    }
    if (path.isEmpty())
        return;
    QPointer<TrackRowInfo> self(this);
    QtConcurrent::run([path] { return readTrackInfo(path); }).then(this, [self, request](const FileTags &info) {
        if (!self || request != self->m_request)
            return;
        const double seconds = info.duration.value_or(0);
        self->m_duration = std::isfinite(seconds) && seconds > 0 ? seconds : 0;
        self->m_artist = info.metadata.artist.value_or(QString());
        Q_EMIT self->loaded();
    });
}
