// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonWriter.h"

#include <QLocale>

#include <cmath>
#include <cstdio>

void JsonWriter::separator()
{
    if (m_needComma)
        m_out.append(',');
    m_needComma = false;
}

void JsonWriter::beginObject()
{
    separator();
    m_out.append('{');
}

void JsonWriter::endObject()
{
    m_out.append('}');
    m_needComma = true;
}

void JsonWriter::beginArray()
{
    separator();
    m_out.append('[');
}

void JsonWriter::endArray()
{
    m_out.append(']');
    m_needComma = true;
}

void JsonWriter::key(QStringView name)
{
    value(name);
    m_out.append(':');
    m_needComma = false;
}

void JsonWriter::value(QStringView s)
{
    separator();
    const QByteArray utf8 = s.toUtf8();
    m_out.reserve(m_out.size() + utf8.size() + 2);
    m_out.append('"');
    for (const char ch : utf8) {
        const auto c = static_cast<unsigned char>(ch);
        switch (c) {
        case '"': m_out.append("\\\""); break;
        case '\\': m_out.append("\\\\"); break;
        case '/': m_out.append("\\/"); break;
        case '\b': m_out.append("\\b"); break;
        case '\f': m_out.append("\\f"); break;
        case '\n': m_out.append("\\n"); break;
        case '\r': m_out.append("\\r"); break;
        case '\t': m_out.append("\\t"); break;
        default:
            if (c < 0x20) {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\u%04x", c);
                m_out.append(buf);
            } else {
                m_out.append(ch);
            }
        }
    }
    m_out.append('"');
    m_needComma = true;
}

void JsonWriter::value(double d)
{
    separator();
    if (!std::isfinite(d)) {
        m_ok = false;
        m_out.append('0');
    } else if (d == std::trunc(d) && std::fabs(d) < 1e15) {
        // Whole numbers are written without a fraction, as "180".
        m_out.append(QByteArray::number(static_cast<qint64>(d)));
    } else {
        m_out.append(QByteArray::number(d, 'g', QLocale::FloatingPointShortest));
    }
    m_needComma = true;
}
