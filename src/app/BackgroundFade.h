// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPropertyAnimation>
#include <QTimer>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// The picture behind the window: when the playing song's picture changes, the
// old one fades out (2.0 s), is swapped 2.1 s after the change, and the new one
// fades in (2.0 s). A newer change cancels a pending swap, so only the latest
// picture ever fades in. An empty source means no picture.
class BackgroundFade : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(QUrl shownSource READ shownSource NOTIFY shownSourceChanged)
    Q_PROPERTY(double opacity READ opacity WRITE setOpacity NOTIFY opacityChanged)

public:
    explicit BackgroundFade(QObject *parent = nullptr, int fadeMs = 2000, int swapDelayMs = 2100);

    QUrl shownSource() const { return m_shown; }
    double opacity() const { return m_opacity; }
    void setOpacity(double opacity);

    // A new picture (or none) for the background.
    void show(const QUrl &source);

    bool swapPending() const { return m_swapTimer.isActive(); }

Q_SIGNALS:
    void shownSourceChanged();
    void opacityChanged();

private:
    void swap();
    void fadeTo(double target);

    QUrl m_shown;
    QUrl m_next;
    double m_opacity = 0;
    QTimer m_swapTimer;
    QPropertyAnimation m_fade;
};
