// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// A short confirmation shown over the window ("Tags saved", "Added to Road").
// It holds one text at a time: a new text replaces the shown one, and each text
// clears, after its own time, whatever text is shown then, so an earlier timer
// can cut a later text short. The window has one; the untagged-songs screen
// has its own for "Saved to N files".
class Banner : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by the main state")
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(Animation animation READ animation NOTIFY changed)

public:
    // How a text enters.
    enum class Animation { Default, Spring };
    Q_ENUM(Animation)

    using QObject::QObject;

    QString text() const { return m_text; }
    Animation animation() const { return m_animation; }

    void show(const QString &text, Animation animation, int clearAfterMs);
    void clear();

Q_SIGNALS:
    void changed();

private:
    void setText(const QString &text, Animation animation);

    QString m_text;
    Animation m_animation = Animation::Default;
};
