#pragma once

#include <QString>
#include <QTemporaryDir>

#include <opencv2/core/mat.hpp>

/// A recording in a temporary folder, for tests.
class RecordingFolder {
public:
    static constexpr int colorWidth = 8;
    static constexpr int colorHeight = 6;
    static constexpr int depthWidth = 4;
    static constexpr int depthHeight = 3;

    /// `moments` small pictures of each kind, named 0, 1, and so on: all colour pixels are
    /// (10 * number, 20, 30) as blue, green and red, all depth pixels 1000 + number, all infrared
    /// pixels 500 + number. `stepMs` above 0 adds a file with times that far apart.
    explicit RecordingFolder(int moments = 4, int stepMs = 0);

    QString path() const;
    QString file(const QString& relative) const;
    void write(const QString& relative, const cv::Mat& image) const;
    void writeText(const QString& relative, const QByteArray& text) const;
    void remove(const QString& relative) const;
    /// Cuts the end of a file off.
    void cut(const QString& relative, qint64 keptBytes) const;

    static cv::Mat color(int number);
    static cv::Mat depth(int number);
    static cv::Mat infrared(int number);

private:
    QTemporaryDir folder;
};
