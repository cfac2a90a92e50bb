// SPDX-License-Identifier: GPL-3.0-or-later
#include "Motion.h"

// Before Qt's headers, whose `signals` keyword clashes with GIO's fields.
#include <gio/gio.h>

#include <QByteArray>
#include <QtGlobal>

namespace {

bool gnomeAnimationsOff()
{
    // Looked up first: GSettings aborts on a schema that isn't installed.
    GSettingsSchemaSource *source = g_settings_schema_source_get_default();
    if (!source)
        return false;
    GSettingsSchema *schema = g_settings_schema_source_lookup(source, "org.gnome.desktop.interface", TRUE);
    if (!schema)
        return false;
    bool off = false;
    if (g_settings_schema_has_key(schema, "enable-animations")) {
        GSettings *settings = g_settings_new_full(schema, nullptr, nullptr);
        off = !g_settings_get_boolean(settings, "enable-animations");
        g_object_unref(settings);
    }
    g_settings_schema_unref(schema);
    return off;
}

} // namespace

bool desktopReducesMotion()
{
    static const bool reduced = [] {
        const QByteArray forced = qgetenv("TARNWELL_REDUCE_MOTION");
        if (!forced.isEmpty())
            return forced != "0";
        return gnomeAnimationsOff();
    }();
    return reduced;
}
