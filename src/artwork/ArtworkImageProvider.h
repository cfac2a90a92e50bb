// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QQuickAsyncImageProvider>

class ArtworkLoader;

// Serves image://artwork/... (see ArtworkSource.h) to QML without blocking:
// the engine asks on its reader thread, the lookup runs on the loader's (GUI)
// thread, and the picture is scaled on the thread pool to the size the Image
// asks for (its sourceSize): covering that box, aspect kept, never enlarged.
// An Image that goes away cancels its lookup. No picture makes the Image's
// status Image.Error, so screens show their placeholder.
//
// Registered once with the engine, which takes ownership:
//     engine.addImageProvider(QStringLiteral("artwork"), new ArtworkImageProvider(&loader));
// The loader must outlive the engine.
class ArtworkImageProvider : public QQuickAsyncImageProvider
{
public:
    explicit ArtworkImageProvider(ArtworkLoader *loader);

    QQuickImageResponse *requestImageResponse(const QString &id, const QSize &requestedSize) override;

    // The picture at the size an Image asked for (see above); exposed for tests.
    static QImage scaledForRequest(const QImage &image, const QSize &requestedSize);

private:
    QPointer<ArtworkLoader> m_loader;
};
