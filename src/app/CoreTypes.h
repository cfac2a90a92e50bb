// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Types of the core library that the screens name in their typed properties.
// The core links no QML, so they are made known to QML here, all of them
// uncreatable: the main state makes them.

#include "browse/AlbumListModel.h"
#include "browse/ArtistDetail.h"
#include "browse/ArtistListModel.h"
#include "browse/SearchIndex.h"
#include "browse/SongListModel.h"
#include "playback/AudioPlayer.h"

#include <QtQml/qqmlregistration.h>

struct RowListModelBaseForeign
{
    Q_GADGET
    QML_FOREIGN(RowListModelBase)
    QML_NAMED_ELEMENT(RowListModelBase)
    QML_UNCREATABLE("made by the main state")
};

struct SongListModelForeign
{
    Q_GADGET
    QML_FOREIGN(SongListModel)
    QML_NAMED_ELEMENT(SongListModel)
    QML_UNCREATABLE("made by the main state")
};

struct AlbumListModelForeign
{
    Q_GADGET
    QML_FOREIGN(AlbumListModel)
    QML_NAMED_ELEMENT(AlbumListModel)
    QML_UNCREATABLE("made by the main state")
};

struct ArtistListModelForeign
{
    Q_GADGET
    QML_FOREIGN(ArtistListModel)
    QML_NAMED_ELEMENT(ArtistListModel)
    QML_UNCREATABLE("made by the main state")
};

struct ArtistDetailForeign
{
    Q_GADGET
    QML_FOREIGN(ArtistDetail)
    QML_NAMED_ELEMENT(ArtistDetail)
    QML_UNCREATABLE("made by the main state")
};

struct SearchIndexForeign
{
    Q_GADGET
    QML_FOREIGN(SearchIndex)
    QML_NAMED_ELEMENT(SearchIndex)
    QML_UNCREATABLE("made by the main state")
};

struct AudioPlayerForeign
{
    Q_GADGET
    QML_FOREIGN(AudioPlayer)
    QML_NAMED_ELEMENT(AudioPlayer)
    QML_UNCREATABLE("made by the main state")
};
