// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

// One logging category per subsystem. Failures the user never sees are still
// explained here: run with QT_LOGGING_RULES="tarnwell.*.debug=true" to read them.
Q_DECLARE_LOGGING_CATEGORY(lcModel)
Q_DECLARE_LOGGING_CATEGORY(lcTags)
Q_DECLARE_LOGGING_CATEGORY(lcLibrary)
Q_DECLARE_LOGGING_CATEGORY(lcPlayback)
Q_DECLARE_LOGGING_CATEGORY(lcArtwork)
Q_DECLARE_LOGGING_CATEGORY(lcBrowse)
Q_DECLARE_LOGGING_CATEGORY(lcApp)
