// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// A compact JSON writer that produces the exact bytes of the playlists file:
// one line, keys in the order written, forward slashes escaped as "\/",
// non-ASCII text as raw UTF-8. Numbers that are not finite make the whole
// document fail (see ok()).
class JsonWriter
{
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    void key(QStringView name);
    void value(QStringView s);
    void value(double d);

    bool ok() const { return m_ok; }
    QByteArray take() { return std::move(m_out); }

private:
    void separator();

    QByteArray m_out;
    bool m_needComma = false;
    bool m_ok = true;
};
