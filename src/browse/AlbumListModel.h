// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Grouping.h"
#include "RowListModel.h"

// The album cards of one artist, in album order, with the selected one marked.
class AlbumListModel : public RowListModel<AlbumGroup>
{
    Q_OBJECT

public:
    enum Role { NameRole = firstRole, TrackCountRole, IsSelectedRole };

    explicit AlbumListModel(QObject *parent = nullptr);

    void setSelectedAlbum(const QString &name);

private:
    QString m_selected;
};
