// SPDX-License-Identifier: GPL-3.0-or-later
#include "SpaceBar.h"

bool spaceBarTogglesPlayback(int key, Qt::KeyboardModifiers modifiers, bool textInputFocused)
{
    return key == Qt::Key_Space && modifiers == Qt::NoModifier && !textInputFocused;
}
