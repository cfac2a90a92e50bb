// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

class AppState;
class QQuickWindow;

// The desktop program from its command line to the end of its event loop:
// options, the application, the main state, the window, the media controls,
// then the folders named on the command line once the window is up.
//
// main() of tarnwell is this alone. A second program built on the same
// library (the measuring one of bench/) passes a hook that gets the window
// and the main state as soon as the window exists.
namespace program {

using WindowHook = std::function<void(QQuickWindow *window, AppState &state)>;

int run(int argc, char **argv, const WindowHook &onWindow = {});

} // namespace program
