// SPDX-License-Identifier: GPL-3.0-or-later
#include "ReplayGain.h"

#include "model/LocalPath.h"
#include "tags/ContainerReader.h"

#include <QLocale>
#include <QRegularExpression>

#include <taglib/fileref.h>
#include <taglib/mp4file.h>
#include <taglib/tpropertymap.h>

#include <cmath>

namespace replaygain {

namespace {

const char gainKey[] = "REPLAYGAIN_TRACK_GAIN";
const char peakKey[] = "REPLAYGAIN_TRACK_PEAK";

std::optional<double> parseNumber(QString text)
{
    bool ok = false;
    const double value = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

QString firstText(const TagLib::StringList &values)
{
    return values.isEmpty() ? QString() : QString::fromStdString(values.front().to8Bit(true));
}

// TagLib 1.13 leaves MP4 freeform atoms out of its property map; their names
// are matched without regard to case, as taggers differ.
TrackGain fromMp4(TagLib::MP4::File &file)
{
    TrackGain gain;
    const TagLib::MP4::Tag *tag = file.tag();
    if (!tag)
        return gain;
    const QString prefix = QStringLiteral("----:com.apple.itunes:");
    for (const auto &[key, item] : tag->itemMap()) {
        const QString name = QString::fromStdString(key.to8Bit(true)).toLower();
        if (!name.startsWith(prefix))
            continue;
        const QString field = name.mid(prefix.size());
        if (field.compare(QLatin1StringView(gainKey), Qt::CaseInsensitive) == 0)
            gain.gainDb = parseGain(firstText(item.toStringList()));
        else if (field.compare(QLatin1StringView(peakKey), Qt::CaseInsensitive) == 0)
            gain.peak = parsePeak(firstText(item.toStringList()));
    }
    return gain;
}

} // namespace

std::optional<double> parseGain(const QString &text)
{
    static const QRegularExpression unit(
        QStringLiteral("\\s*db\\s*$"), QRegularExpression::CaseInsensitiveOption);
    QString number = text.trimmed();
    number.remove(unit);
    if (number.startsWith(u'+'))
        number.remove(0, 1);
    const std::optional<double> gain = parseNumber(number);
    if (!gain || std::abs(*gain) > maxAbsGainDb)
        return std::nullopt;
    return gain;
}

std::optional<double> parsePeak(const QString &text)
{
    const std::optional<double> peak = parseNumber(text);
    if (!peak || *peak <= 0)
        return std::nullopt;
    return peak;
}

TrackGain readTrackGain(const QString &path)
{
    container::ensureTagLibSetUp();
    const QByteArray name = localpath::toBytes(path);
    TagLib::FileRef ref(name.constData(), false);
    if (ref.isNull())
        return {};
    if (auto *mp4 = dynamic_cast<TagLib::MP4::File *>(ref.file()))
        return fromMp4(*mp4);
    // ID3v2 TXXX frames and Vorbis comments both appear here under their
    // description or field name, upper-cased.
    const TagLib::PropertyMap properties = ref.file()->properties();
    TrackGain gain;
    if (properties.contains(gainKey))
        gain.gainDb = parseGain(firstText(properties[gainKey]));
    if (properties.contains(peakKey))
        gain.peak = parsePeak(firstText(properties[peakKey]));
    return gain;
}

double levellingFactor(const TrackGain &gain)
{
    const double db = gain.gainDb.value_or(0.0) + preAmpDb;
    const double factor = std::pow(10.0, db / 20.0);
    const double peak = gain.gainDb ? gain.peak.value_or(1.0) : 1.0;
    return factor * peak > 1.0 ? 1.0 / peak : factor;
}

} // namespace replaygain
