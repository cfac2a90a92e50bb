// SPDX-License-Identifier: GPL-3.0-or-later
#include "AlbumListModel.h"

AlbumListModel::AlbumListModel(QObject *parent)
    : RowListModel<AlbumGroup>(
          {
              {"name", [](const AlbumGroup &album) { return QVariant(album.name); }},
              {"trackCount", [](const AlbumGroup &album) { return QVariant(int(album.tracks.size())); }},
              {"isSelected",
               [this](const AlbumGroup &album) {
                   return QVariant(!m_selected.isEmpty() && sameAlbumName(album.name, m_selected));
               }},
          },
          [](const AlbumGroup &a, const AlbumGroup &b) { return a.name == b.name; }, parent)
{
}

void AlbumListModel::setSelectedAlbum(const QString &name)
{
    if (m_selected == name)
        return;
    const QString previous = std::exchange(m_selected, name);
    rowsChanged([&](const AlbumGroup &album) {
        return sameAlbumName(album.name, previous) || sameAlbumName(album.name, name);
    }, {IsSelectedRole});
}
