// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Songs on disk and imports into the main state, for the main-state tests.
#include "AppState.h"
#include "support/TestSupport.h"

#include <QSignalSpy>
#include <QTest>

namespace apptest {

// A short FLAC file with these tags ("ARTIST=Ada", ...).
inline bool makeSong(const QString &path, QStringList tags = {}, double seconds = 0.5)
{
    for (QString &tag : tags)
        tag.prepend(QStringLiteral("--set-tag="));
    return testsupport::makeAudio(path, seconds)
        && (tags.isEmpty() || testsupport::run(QStringLiteral("metaflac"), tags << path).exitCode == 0);
}

// Imports a folder and waits until its songs are in the library and the search index.
inline bool importAndWait(AppState &state, const QUrl &folder)
{
    QSignalSpy imported(state.library(), &Library::folderImported);
    state.library()->importFolder(folder);
    return QTest::qWaitFor([&] {
        return imported.size() == 1 && !state.searchIndex()->isBuilding()
            && state.searchIndex()->count() == state.library()->tracks().size();
    }, 60000);
}

inline QString idOf(AppState &state, int row) { return trackjson::uuidText(state.library()->tracks().at(row).id); }

} // namespace apptest
