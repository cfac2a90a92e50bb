// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <Qt>

// The window's one keyboard shortcut: the space bar pressed alone toggles
// playback, unless a text input has the focus (the space is typed there).
// With any modifier held (Shift, Control, Alt, Meta, a keypad key) the key
// goes on to whoever else wants it. The key filter toggles and consumes the
// event when this is true, and lets it through otherwise.
bool spaceBarTogglesPlayback(int key, Qt::KeyboardModifiers modifiers, bool textInputFocused);
