// SPDX-License-Identifier: GPL-3.0-or-later
#include "Banner.h"

#include "model/Log.h"

#include <QTimer>

void Banner::show(const QString &text, Animation animation, int clearAfterMs)
{
    qCDebug(lcApp) << "banner:" << text;
    setText(text, animation);
    // Never cancelled, and it clears whatever is shown when it fires.
    QTimer::singleShot(clearAfterMs, this, &Banner::clear);
}

void Banner::clear()
{
    setText(QString(), Animation::Default);
}

void Banner::setText(const QString &text, Animation animation)
{
    if (text == m_text)
        return;
    m_text = text;
    // A clearing keeps the animation the text came with, so it leaves as it entered.
    if (!text.isEmpty())
        m_animation = animation;
    Q_EMIT changed();
}
