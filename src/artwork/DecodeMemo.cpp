// SPDX-License-Identifier: GPL-3.0-or-later
#include "DecodeMemo.h"

#include "ImageCodec.h"
#include "model/LocalPath.h"

#include <QCryptographicHash>

#include <sys/stat.h>

DecodeMemo::DecodeMemo(qint64 budgetBytes)
    : m_images(qsizetype(budgetBytes / 1024))
{
}

std::optional<std::optional<QImage>> DecodeMemo::find(const QByteArray &key)
{
    QMutexLocker lock(&m_mutex);
    const QImage *image = m_images.object(key);
    if (!image)
        return std::nullopt;
    return image->isNull() ? std::optional<QImage>() : std::optional<QImage>(*image);
}

void DecodeMemo::remember(const QByteArray &key, const std::optional<QImage> &image)
{
    const QImage value = image.value_or(QImage());
    const qsizetype cost = std::max<qsizetype>(1, (value.sizeInBytes() + 1023) / 1024);
    QMutexLocker lock(&m_mutex);
    m_images.insert(key, new QImage(value), cost);
}

std::optional<QImage> DecodeMemo::loadFile(const QString &path)
{
    const QByteArray name = localpath::toBytes(path);
    struct stat st;
    if (::stat(name.constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return std::nullopt;
    const QByteArray key = "file\n" + name + '\n' + QByteArray::number(qint64(st.st_size)) + '\n'
        + QByteArray::number(qint64(st.st_mtim.tv_sec)) + '.' + QByteArray::number(qint64(st.st_mtim.tv_nsec));
    if (auto known = find(key))
        return *known;
    std::optional<QImage> image = artwork::loadImageFile(path);
    remember(key, image);
    return image;
}

std::optional<QImage> DecodeMemo::decode(const QByteArray &bytes)
{
    const QByteArray key = "bytes\n" + QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
    if (auto known = find(key))
        return *known;
    std::optional<QImage> image = artwork::decodeImage(bytes);
    remember(key, image);
    return image;
}

void DecodeMemo::clear()
{
    QMutexLocker lock(&m_mutex);
    m_images.clear();
}

qint64 DecodeMemo::bytes()
{
    QMutexLocker lock(&m_mutex);
    return qint64(m_images.totalCost()) * 1024;
}
