// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Pictures the screens would otherwise ask a shader for, drawn once on the CPU
// and small, so that every renderer (the software one too) shows them and a
// frame costs no more than drawing an image.

#include <QColor>
#include <QImage>
#include <QQuickImageProvider>

namespace drawn {

// The image blurred by a Gaussian reaching `radius` pixels (its deviation a
// third of that); edges repeat their outermost pixels.
QImage blurred(const QImage &image, double radius);

// The shadow of a rounded card in `color` (its alpha too), blurred by `blur`, as a
// nine-patch: a square of side 2 * tile + 1 where tile = cornerRadius + 2 * blur,
// the card's edge `blur` pixels in from the image's. A BorderImage with all
// four borders `tile` stretches its one-pixel middle row and column to any card.
QImage shadow(int cornerRadius, int blur, const QColor &color);

// The window's backdrop: the picture squeezed to a small square and softened
// past recognition, multiplied at `strength` into the gradient from `top` to
// `bottom`. A few dozen pixels; the screen stretches it over the window, where
// laid at opacity o over the plain gradient it equals a multiply at o * strength.
QImage backdrop(const QImage &picture, const QColor &top, const QColor &bottom, double strength);

} // namespace drawn

// Serves image://shadow/<corner radius>/<blur>/<colour as #aarrggbb> (see
// drawn::shadow) for CardShadow.qml. Registered with every engine that shows
// the screens:
//     engine.addImageProvider(QStringLiteral("shadow"), new ShadowImageProvider);
class ShadowImageProvider : public QQuickImageProvider
{
public:
    ShadowImageProvider();
    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};
