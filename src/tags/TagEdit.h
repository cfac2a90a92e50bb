// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// What a save does to each of the three tags it may touch. Everything else in
// the file (genre, track number, pictures, ...) is always kept.
struct FieldEdit
{
    enum class Action { keep, set, remove };

    Action action = Action::keep;
    QString value; // the new text when action is set

    static FieldEdit keep() { return {}; }
    // An empty value removes the tag: no tag is ever written empty.
    static FieldEdit set(const QString &v) { return v.isEmpty() ? remove() : FieldEdit { Action::set, v }; }
    static FieldEdit remove() { return { Action::remove, {} }; }
    // Present and non-empty: set; absent or empty: remove.
    static FieldEdit fromValue(const std::optional<QString> &v) { return v ? set(*v) : remove(); }

    // The field's value after the edit, given its value before.
    std::optional<QString> applied(const std::optional<QString> &old) const
    {
        return action == Action::set   ? std::optional<QString>(value)
            : action == Action::remove ? std::nullopt
                                       : old;
    }

    bool operator==(const FieldEdit &) const = default;
};

struct TagEdit
{
    FieldEdit title;
    FieldEdit artist;
    FieldEdit album;

    // The editors' form: each field given (set) or not (removed).
    static TagEdit fromValues(const std::optional<QString> &title, const std::optional<QString> &artist,
        const std::optional<QString> &album)
    {
        return { FieldEdit::fromValue(title), FieldEdit::fromValue(artist), FieldEdit::fromValue(album) };
    }

    bool keepsEverything() const
    {
        return title.action == FieldEdit::Action::keep && artist.action == FieldEdit::Action::keep
            && album.action == FieldEdit::Action::keep;
    }
};
