// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <functional>

// Watches every key press that reaches a window of the program before the
// focused item sees it, so the playback keys (PlaybackKeys.h) work anywhere
// except while the user types.
class KeyPressFilter : public QObject
{
    Q_OBJECT

public:
    struct KeyPress
    {
        int key = 0;
        Qt::KeyboardModifiers modifiers;
        bool autoRepeat = false;
        // The focused item edits text (a text field or text area).
        bool textInputFocused = false;
        // The focused item is a list or grid, or inside one: the arrows move
        // its current item.
        bool listFocused = false;
        // ... and Space ticks its current row (the list says so with a
        // property `takesSpace`).
        bool listTakesSpace = false;
    };

    // Answers true when it handled the key press, which then goes no further.
    using Handler = std::function<bool(const KeyPress &)>;

    explicit KeyPressFilter(Handler handler, QObject *parent = nullptr);

    // Whether an item of a Qt Quick window edits text.
    static bool editsText(const QObject *item);
    // The list or grid that holds an item (or is it); null when none.
    static QObject *enclosingList(QObject *item);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Handler m_handler;
};
