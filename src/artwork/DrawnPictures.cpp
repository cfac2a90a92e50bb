// SPDX-License-Identifier: GPL-3.0-or-later
#include "DrawnPictures.h"

#include <QPainter>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace drawn {

namespace {

// One pass of a separable blur along rows (or columns), edges clamped.
QImage blurPass(const QImage &in, const std::vector<float> &kernel, bool alongRows)
{
    QImage out(in.size(), in.format());
    const int r = int(kernel.size() / 2);
    const int w = in.width();
    const int h = in.height();
    for (int y = 0; y < h; ++y) {
        auto *target = reinterpret_cast<QRgb *>(out.scanLine(y));
        for (int x = 0; x < w; ++x) {
            std::array<float, 4> sum{};
            for (int k = -r; k <= r; ++k) {
                const int sx = alongRows ? std::clamp(x + k, 0, w - 1) : x;
                const int sy = alongRows ? y : std::clamp(y + k, 0, h - 1);
                const QRgb p = reinterpret_cast<const QRgb *>(in.constScanLine(sy))[sx];
                const float f = kernel[size_t(k + r)];
                sum[0] += f * float(qRed(p));
                sum[1] += f * float(qGreen(p));
                sum[2] += f * float(qBlue(p));
                sum[3] += f * float(qAlpha(p));
            }
            const auto channel = [](float v) { return std::clamp(int(std::lround(v)), 0, 255); };
            target[x] = qRgba(channel(sum[0]), channel(sum[1]), channel(sum[2]), channel(sum[3]));
        }
    }
    return out;
}

QColor mixed(const QColor &a, const QColor &b, double t)
{
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * t),
                            float(a.greenF() + (b.greenF() - a.greenF()) * t),
                            float(a.blueF() + (b.blueF() - a.blueF()) * t));
}

} // namespace

QImage blurred(const QImage &image, double radius)
{
    QImage source = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const int r = int(std::ceil(radius));
    if (source.isNull() || r <= 0)
        return source;
    const double sigma = std::max(radius / 3.0, 0.5);
    std::vector<float> kernel(size_t(2 * r + 1));
    float total = 0;
    for (int k = -r; k <= r; ++k)
        total += kernel[size_t(k + r)] = float(std::exp(-(k * k) / (2 * sigma * sigma)));
    for (float &f : kernel)
        f /= total;
    return blurPass(blurPass(source, kernel, true), kernel, false);
}

QImage shadow(int cornerRadius, int blur, const QColor &color)
{
    cornerRadius = std::clamp(cornerRadius, 0, 256);
    blur = std::clamp(blur, 0, 256);
    const int side = 2 * (cornerRadius + 2 * blur) + 1;
    QImage card(side, side, QImage::Format_ARGB32_Premultiplied);
    card.fill(Qt::transparent);
    {
        QPainter painter(&card);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawRoundedRect(QRectF(blur, blur, side - 2 * blur, side - 2 * blur), cornerRadius, cornerRadius);
    }
    return blurred(card, blur);
}

QImage backdrop(const QImage &picture, const QColor &top, const QColor &bottom, double strength)
{
    if (picture.isNull())
        return {};
    // Squeezed whole (the window shows all of it, stretched), then softened:
    // at this size the colours stay and any lettering is gone.
    constexpr int edge = 24;
    QImage soft = blurred(picture.scaled(edge, edge, Qt::IgnoreAspectRatio, Qt::SmoothTransformation), 2.5);
    // Taller than wide: the gradient runs down the window.
    constexpr int rows = 64;
    soft = soft.scaled(edge, rows, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
               .convertToFormat(QImage::Format_RGB32);
    QImage out(edge, rows, QImage::Format_RGB32);
    for (int y = 0; y < rows; ++y) {
        const QColor base = mixed(top, bottom, (y + 0.5) / rows);
        const auto *in = reinterpret_cast<const QRgb *>(soft.constScanLine(y));
        auto *target = reinterpret_cast<QRgb *>(out.scanLine(y));
        for (int x = 0; x < edge; ++x) {
            // base * (1 - s + s * picture), a channel at a time
            const auto channel = [&](double b, int p) {
                return std::clamp(int(std::lround(255.0 * b * (1.0 - strength + strength * p / 255.0))), 0, 255);
            };
            target[x] = qRgb(channel(base.redF(), qRed(in[x])), channel(base.greenF(), qGreen(in[x])),
                             channel(base.blueF(), qBlue(in[x])));
        }
    }
    return out;
}

} // namespace drawn

ShadowImageProvider::ShadowImageProvider()
    : QQuickImageProvider(QQuickImageProvider::Image)
{
}

QImage ShadowImageProvider::requestImage(const QString &id, QSize *size, const QSize &)
{
    const QStringList parts = id.split(u'/');
    QImage image;
    if (parts.size() == 3)
        image = drawn::shadow(parts[0].toInt(), parts[1].toInt(), QColor(QUrl::fromPercentEncoding(parts[2].toUtf8())));
    if (size)
        *size = image.size();
    return image;
}
