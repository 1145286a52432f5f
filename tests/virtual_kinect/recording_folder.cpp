#include "recording_folder.h"

#include <QDir>
#include <QFile>

#include <opencv2/imgcodecs.hpp>

using namespace Qt::StringLiterals;

RecordingFolder::RecordingFolder(int moments, int stepMs) {
    for (const QString& part : {u"color"_s, u"depth"_s, u"ir"_s})
        QDir(path()).mkpath(part);
    QByteArray times;
    for (int number = 0; number < moments; ++number) {
        write(u"color/%1.png"_s.arg(number), color(number));
        write(u"depth/%1.png"_s.arg(number), depth(number));
        write(u"ir/%1.png"_s.arg(number), infrared(number));
        times += QByteArray::number(number) + ',' + QByteArray::number(number * stepMs) + '\n';
    }
    if (stepMs > 0)
        writeText(u"timestamps.csv"_s, times);
}

QString RecordingFolder::path() const {
    return folder.filePath(u"walk"_s);
}

QString RecordingFolder::file(const QString& relative) const {
    return QDir(path()).filePath(relative);
}

void RecordingFolder::write(const QString& relative, const cv::Mat& image) const {
    if (!cv::imwrite(QFile::encodeName(file(relative)).toStdString(), image))
        qFatal("cannot write %s", qPrintable(file(relative)));
}

void RecordingFolder::writeText(const QString& relative, const QByteArray& text) const {
    QFile target(file(relative));
    if (!target.open(QIODevice::WriteOnly) || target.write(text) != text.size())
        qFatal("cannot write %s", qPrintable(file(relative)));
}

void RecordingFolder::remove(const QString& relative) const {
    if (!QFile::remove(file(relative)) && !QDir(file(relative)).removeRecursively())
        qFatal("cannot remove %s", qPrintable(file(relative)));
}

void RecordingFolder::cut(const QString& relative, qint64 keptBytes) const {
    if (QFile(file(relative)).size() <= keptBytes || !QFile::resize(file(relative), keptBytes))
        qFatal("cannot cut %s", qPrintable(file(relative)));
}

cv::Mat RecordingFolder::color(int number) {
    return {colorHeight, colorWidth, CV_8UC3, cv::Scalar(10.0 * number, 20, 30)};
}

cv::Mat RecordingFolder::depth(int number) {
    return {depthHeight, depthWidth, CV_16UC1, cv::Scalar(1000.0 + number)};
}

cv::Mat RecordingFolder::infrared(int number) {
    return {depthHeight, depthWidth, CV_16UC1, cv::Scalar(500.0 + number)};
}
