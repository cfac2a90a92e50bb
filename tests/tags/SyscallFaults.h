// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <functional>

// Failures the tests inject into the system calls of tag saving, where root
// ignores permissions or no small file system can be mounted: a test linking
// tarnwell_tag_faults has them wrapped by the linker (see CMakeLists.txt).
namespace tagio::faults {

enum Step {
    readWhole, // read(2)
    createTemporary, // open(2) with O_TMPFILE, mkostemps(3)
    writeData, // write(2)
    syncFile, // fsync(2) of a file, syncfs(2)
    renameFile, // rename(2)
    stepCount
};

// The nth call of the step fails with err; 0 means never.
void inject(Step step, int nthCall, int err);
// Runs the action at the next call of the step, before the call: another
// program's doing at a chosen moment of a save.
void whenCalled(Step step, std::function<void()> action);
void clear();
// A write that fails half-way: at most this many bytes are written before the
// injected writeData failure.
void setPartialWriteBytes(qint64 bytes);

} // namespace tagio::faults
