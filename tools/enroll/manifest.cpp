#include "enroll/manifest.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

QJsonObject gradeJson(const FaceMeasures& measures, bool good) {
    return {{u"side_px"_s, measures.sidePx},
            {u"mean"_s, measures.mean},
            {u"deviation"_s, measures.deviation},
            {u"sharpness"_s, measures.sharpness},
            {u"clipped_share"_s, measures.clippedShare},
            {u"halves_differ"_s, measures.halvesDiffer},
            {u"meets_wishes"_s, good}};
}

QJsonObject entryJson(const SampleEntry& entry) {
    QJsonObject json{{u"file"_s, entry.file},
                     {u"sha256"_s, QString::fromLatin1(entry.sha256)},
                     {u"taken_at"_s, entry.takenAt.toUTC().toString(Qt::ISODateWithMs)},
                     {u"distance"_s, distanceName(entry.distance)},
                     {u"pose"_s, entry.pose},
                     {u"detector"_s, entry.detector},
                     {u"grade"_s, gradeJson(entry.measures, entry.good)}};
    if (entry.meters)
        json.insert(u"meters"_s, *entry.meters);
    if (!entry.source.isEmpty())
        json.insert(u"source"_s, entry.source);
    return json;
}

SampleEntry entryFromJson(const QJsonObject& json) {
    SampleEntry entry;
    entry.file = json.value(u"file"_s).toString();
    entry.sha256 = json.value(u"sha256"_s).toString().toLatin1();
    entry.takenAt = QDateTime::fromString(json.value(u"taken_at"_s).toString(), Qt::ISODateWithMs);
    entry.source = json.value(u"source"_s).toString();
    entry.distance = distanceNamed(json.value(u"distance"_s).toString()).value_or(Distance::Near);
    entry.pose = json.value(u"pose"_s).toString();
    entry.detector = json.value(u"detector"_s).toString();
    if (const QJsonValue meters = json.value(u"meters"_s); meters.isDouble())
        entry.meters = meters.toDouble();
    const QJsonObject grade = json.value(u"grade"_s).toObject();
    entry.measures = {
        grade.value(u"side_px"_s).toInt(),          grade.value(u"mean"_s).toDouble(),
        grade.value(u"deviation"_s).toDouble(),     grade.value(u"sharpness"_s).toDouble(),
        grade.value(u"clipped_share"_s).toDouble(), grade.value(u"halves_differ"_s).toDouble()};
    entry.good = grade.value(u"meets_wishes"_s).toBool();
    return entry;
}

} // namespace

QByteArray toJson(const Manifest& manifest) {
    QJsonArray samples;
    for (const SampleEntry& entry : manifest.samples)
        samples.append(entryJson(entry));
    return QJsonDocument(QJsonObject{{u"sitting"_s, manifest.sitting},
                                     {u"light"_s, manifest.light},
                                     {u"samples"_s, samples}})
        .toJson();
}

std::optional<Manifest> manifestFrom(const QByteArray& json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject() || !document.object().value(u"samples"_s).isArray())
        return std::nullopt;
    const QJsonObject object = document.object();
    Manifest manifest;
    manifest.sitting = object.value(u"sitting"_s).toString();
    manifest.light = object.value(u"light"_s).toInt(1);
    for (const QJsonValue& sample : object.value(u"samples"_s).toArray())
        manifest.samples.append(entryFromJson(sample.toObject()));
    return manifest;
}

SampleEntry entryFor(const KeptSample& sample, const QString& file, const QByteArray& content,
                     const QString& source) {
    SampleEntry entry;
    entry.file = file;
    entry.sha256 = contentHash(content);
    entry.takenAt = QDateTime::fromMSecsSinceEpoch(sample.timeMs);
    entry.source = source;
    entry.distance = sample.distance;
    entry.pose = poseName(sample.pose);
    entry.detector = QString::fromStdString(sample.face.detector);
    entry.meters = sample.face.meters;
    entry.measures = sample.face.measures;
    entry.good = meetsWishes(sample.face.measures);
    return entry;
}

QByteArray contentHash(const QByteArray& content) {
    return QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex();
}

} // namespace enroll
