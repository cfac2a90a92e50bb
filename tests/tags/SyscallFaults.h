// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <functional>

// Failures the tests inject into the system calls of tag saving, where root
// ignores permissions or no small file system can be mounted. A test that links
// tarnwell_tag_faults has open, mkostemps, read, write, fsync, syncfs and rename
// wrapped by the linker; the program links none of this. Each step counts down
// on its calls and fails the one where the count reaches 1 with the given
// errno; 0 means never.
namespace tagio::faults {

enum Step {
    readWhole, // read(2)
    createTemporary, // open(2) with O_TMPFILE, mkostemps(3)
    writeData, // write(2)
    syncFile, // fsync(2) of a file, syncfs(2)
    renameFile, // rename(2)
    stepCount
};

void inject(Step step, int nthCall, int err);
// Runs the action at the next call of the step, before the call: another
// program's doing at a chosen moment of a save.
void whenCalled(Step step, std::function<void()> action);
void clear();
// A write that fails half-way: at most this many bytes are written before the
// injected writeData failure.
void setPartialWriteBytes(qint64 bytes);

} // namespace tagio::faults
