// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppState.h"

AppState::AppState(QObject *parent)
    : QObject(parent)
{
}
