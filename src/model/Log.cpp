// SPDX-License-Identifier: GPL-3.0-or-later
#include "Log.h"

Q_LOGGING_CATEGORY(lcModel, "tarnwell.model", QtInfoMsg)
Q_LOGGING_CATEGORY(lcTags, "tarnwell.tags", QtInfoMsg)
Q_LOGGING_CATEGORY(lcLibrary, "tarnwell.library", QtInfoMsg)
Q_LOGGING_CATEGORY(lcPlayback, "tarnwell.playback", QtInfoMsg)
Q_LOGGING_CATEGORY(lcArtwork, "tarnwell.artwork", QtInfoMsg)
Q_LOGGING_CATEGORY(lcBrowse, "tarnwell.browse", QtInfoMsg)
Q_LOGGING_CATEGORY(lcApp, "tarnwell.app", QtInfoMsg)
