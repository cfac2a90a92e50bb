// SPDX-License-Identifier: GPL-3.0-or-later
#include "PlaybackKeys.h"

#include "playback/SpaceBar.h"

PlaybackKey playbackKeyFor(const KeyPressFilter::KeyPress &press)
{
    // A keypad arrow is still an arrow.
    const Qt::KeyboardModifiers modifiers = press.modifiers & ~Qt::KeypadModifier;
    const bool arrow = press.key == Qt::Key_Left || press.key == Qt::Key_Right;
    const double direction = press.key == Qt::Key_Right ? 1 : -1;

    switch (press.key) {
    case Qt::Key_MediaPlay:
    case Qt::Key_MediaPause:
    case Qt::Key_MediaTogglePlayPause:
        return {PlaybackKey::TogglePlayPause};
    case Qt::Key_MediaNext:
        return {PlaybackKey::Next};
    case Qt::Key_MediaPrevious:
        return {PlaybackKey::Previous};
    default:
        break;
    }
    if (press.key == Qt::Key_Space && !press.listTakesSpace
        && spaceBarTogglesPlayback(press.key, modifiers, press.textInputFocused))
        return {PlaybackKey::TogglePlayPause};
    if (press.key == Qt::Key_S && modifiers == Qt::ControlModifier)
        return {PlaybackKey::ToggleShuffle};
    if (!arrow || press.textInputFocused)
        return {};
    if (modifiers == Qt::ControlModifier)
        return {direction > 0 ? PlaybackKey::Next : PlaybackKey::Previous};
    if (press.listFocused)
        return {};
    if (modifiers == Qt::NoModifier)
        return {PlaybackKey::SeekBy, 5 * direction};
    if (modifiers == Qt::ShiftModifier)
        return {PlaybackKey::SeekBy, 30 * direction};
    return {};
}
