// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Palette.h"

#include <QColor>
#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

// The palette as QML sees it: one colour property per role for the theme in
// `current`. Main.qml keeps `current` equal to the main state's theme; screens
// read Theme.brand, Theme.primaryText... and never spell a colour themselves.
// Also the fonts and the timings that every screen shares.
class Theme : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY changed)
    Q_PROPERTY(QStringList themeNames READ themeNames CONSTANT)
    Q_PROPERTY(QStringList themeRawValues READ themeRawValues CONSTANT)

    Q_PROPERTY(QColor windowBackground READ windowBackground NOTIFY changed)
    Q_PROPERTY(QColor panelBackground READ panelBackground NOTIFY changed)
    Q_PROPERTY(QColor raisedBackground READ raisedBackground NOTIFY changed)
    Q_PROPERTY(QColor barBackground READ barBackground NOTIFY changed)
    Q_PROPERTY(QColor progressTrack READ progressTrack NOTIFY changed)
    Q_PROPERTY(QColor subtleFill READ subtleFill NOTIFY changed)
    Q_PROPERTY(QColor border READ border NOTIFY changed)
    Q_PROPERTY(QColor brand READ brand NOTIFY changed)
    Q_PROPERTY(QColor accent READ accent NOTIFY changed)
    Q_PROPERTY(QColor buttonFill READ buttonFill NOTIFY changed)
    Q_PROPERTY(QColor buttonFillHover READ buttonFillHover NOTIFY changed)
    Q_PROPERTY(QColor secondaryText READ secondaryText NOTIFY changed)
    Q_PROPERTY(QColor primaryText READ primaryText NOTIFY changed)
    Q_PROPERTY(QColor onAccentText READ onAccentText NOTIFY changed)
    Q_PROPERTY(QColor transportSymbol READ transportSymbol NOTIFY changed)
    Q_PROPERTY(QColor selectedAlbumOutline READ selectedAlbumOutline NOTIFY changed)
    Q_PROPERTY(QColor albumHoverShade READ albumHoverShade NOTIFY changed)
    // The ring around what has the keyboard focus (>= 3:1 on the backgrounds).
    Q_PROPERTY(QColor focusRing READ focusRing NOTIFY changed)
    // The shadow under popups and panels: black in every theme.
    Q_PROPERTY(QColor shadow READ shadow CONSTANT)

    Q_PROPERTY(QString uiFont READ uiFont CONSTANT)
    Q_PROPERTY(QString wordMarkFont READ wordMarkFont CONSTANT)
    Q_PROPERTY(QString symbolFont READ symbolFont CONSTANT)

    // Shared timings, in milliseconds, and the easing curves as QML's
    // Easing.Bezier control points.
    // Every animation's length goes through here: with reduced motion
    // (Motion.h) springs and fades end at once.
    Q_PROPERTY(bool reduceMotion READ reduceMotion CONSTANT)
    Q_PROPERTY(int panelDuration READ panelDuration CONSTANT)
    Q_PROPERTY(int hoverDuration READ hoverDuration CONSTANT)
    Q_PROPERTY(int popupDuration READ popupDuration CONSTANT)
    Q_PROPERTY(int defaultDuration READ defaultDuration CONSTANT)
    Q_PROPERTY(int springDuration READ springDuration CONSTANT)
    Q_PROPERTY(QVariantList easeOut READ easeOut CONSTANT)
    Q_PROPERTY(QVariantList easeInOut READ easeInOut CONSTANT)
    Q_PROPERTY(QVariantList easeIn READ easeIn CONSTANT)
    Q_PROPERTY(QVariantList spring READ spring CONSTANT)

public:
    explicit Theme(QObject *parent = nullptr);

    int current() const { return int(m_theme); }
    void setCurrent(int index);
    AppTheme theme() const { return m_theme; }

    static QStringList themeNames();
    static QStringList themeRawValues();

    QColor windowBackground() const { return role(palette::Role::WindowBackground); }
    QColor panelBackground() const { return role(palette::Role::PanelBackground); }
    QColor raisedBackground() const { return role(palette::Role::RaisedBackground); }
    QColor barBackground() const { return role(palette::Role::BarBackground); }
    QColor progressTrack() const { return role(palette::Role::ProgressTrack); }
    QColor subtleFill() const { return role(palette::Role::SubtleFill); }
    QColor border() const { return role(palette::Role::Border); }
    QColor brand() const { return role(palette::Role::Brand); }
    QColor accent() const { return role(palette::Role::Accent); }
    QColor buttonFill() const { return role(palette::Role::ButtonFill); }
    QColor buttonFillHover() const { return role(palette::Role::ButtonFillHover); }
    QColor secondaryText() const { return role(palette::Role::SecondaryText); }
    QColor primaryText() const { return role(palette::Role::PrimaryText); }
    QColor onAccentText() const { return role(palette::Role::OnAccentText); }
    QColor transportSymbol() const { return role(palette::Role::TransportSymbol); }
    QColor selectedAlbumOutline() const { return role(palette::Role::SelectedAlbumOutline); }
    QColor albumHoverShade() const { return role(palette::Role::AlbumHoverShade); }
    QColor focusRing() const { return role(palette::Role::FocusRing); }
    static QColor shadow() { return Qt::black; }

    static QString uiFont();
    static QString wordMarkFont();
    static QString symbolFont();

    static bool reduceMotion();
    // A length in milliseconds, or 0 with reduced motion.
    Q_INVOKABLE static int duration(int milliseconds) { return reduceMotion() ? 0 : milliseconds; }
    static int panelDuration() { return duration(150); }
    static int hoverDuration() { return duration(120); }
    static int popupDuration() { return duration(120); }
    static int defaultDuration() { return duration(350); }
    static int springDuration() { return duration(450); }
    static QVariantList easeOut();
    static QVariantList easeInOut();
    static QVariantList easeIn();
    static QVariantList spring();

    // The colour parser, for the rare colour that comes from data rather than
    // from the palette.
    Q_INVOKABLE static QColor color(const QString &text);

Q_SIGNALS:
    void changed();

private:
    QColor role(palette::Role r) const { return palette::color(r, m_theme); }

    AppTheme m_theme = AppTheme::Noir;
};
