// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Whether the desktop asks for reduced motion: TARNWELL_REDUCE_MOTION=1 (or
// 0) decides when set; otherwise GNOME's enable-animations setting
// (org.gnome.desktop.interface), when the desktop has it. Read once.
bool desktopReducesMotion();
