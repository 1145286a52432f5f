#include "face/shared_search.h"

#include "cascade_pictures.h"
#include "face/face_options.h"
#include "library_search.h"

#include <QTest>
#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace {

constexpr double scaleFactor = 1.1;
const cv::Size window(20, 20);
/// The only width below 800 at which one of the scale pictures is not mirrored exactly.
constexpr int unevenWidth = 499;

CascadeData cut(const std::string& path, std::size_t stages) {
    const std::optional<CascadeData> data = readCascade(path);
    if (!data)
        qFatal("the cascade is not understood");
    return cutCascade(*data, stages);
}

cv::Mat mirrorOf(const cv::Mat& picture) {
    cv::Mat mirror;
    cv::flip(picture, mirror, 1);
    return mirror;
}

/// Of how many scales of that width the pictures are not mirrored exactly.
std::ptrdiff_t unevenScales(int width) {
    return std::ranges::count_if(
        cascadeScales({width, width}, window, scaleFactor, {}),
        [width](const CascadeScale& scale) { return !mirrorsExactly(width, scale); });
}

std::unique_ptr<CascadeSearch> searching(const CascadeData& cascade) {
    return CascadeSearch::make(cascade, supportedCascadeKernels().front());
}

cv::CascadeClassifier ours(const CascadeData& cascade) {
    cv::CascadeClassifier result = librarySearching(cascade);
    searchBy(result, searching(cascade));
    return result;
}

void addPictures() {
    QTest::addColumn<cv::Mat>("picture");
    QTest::newRow("even width") << noisePicture({160, 90}, 4, 1);
    QTest::newRow("odd width") << noisePicture({131, 97}, 3, 2);
    QTest::newRow("a scale is not mirrored exactly") << noisePicture({unevenWidth, 40}, 4, 3);
    QTest::newRow("fits the smaller window only") << noisePicture({60, 22}, 3, 4);
}

} // namespace

class SharedSearchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nearlyAllWidthsMirrorExactly();
    void scalesMirrorExactlyWherePicturesDo();
    void severalSearchesFindWhatEachFindsAlone_data() { addPictures(); }
    void severalSearchesFindWhatEachFindsAlone();
    void anotherPictureOfTheSameSizeIsSearchedAnew();
    void detectsWhatEachCascadeDetects_data() { addPictures(); }
    void detectsWhatEachCascadeDetects();
    void oneCascadeOfTheLibraryIsSearchedByIt();
    void aStopEndsIt();

private:
    const CascadeData frontalData = cut(face::Options().frontalCascadePath, 3);
    const CascadeData profileData = cut(face::Options().profileCascadePath, 3);
    const std::unique_ptr<CascadeSearch> frontal = searching(frontalData);
    const std::unique_ptr<CascadeSearch> profile = searching(profileData);
};

void SharedSearchTest::nearlyAllWidthsMirrorExactly() {
    QCOMPARE(unevenScales(unevenWidth), 1);
    for (const int width : {131, 498, 500})
        QCOMPARE(unevenScales(width), 0);
}

void SharedSearchTest::scalesMirrorExactlyWherePicturesDo() {
    int uneven = 0;
    for (const int width : {333, unevenWidth, 500}) {
        const cv::Mat noise = noisePicture({width, 60}, 1, 5);
        for (const CascadeScale& scale : cascadeScales(noise.size(), window, scaleFactor, {})) {
            CascadePyramid pyramid;
            pyramid.begin(noise);
            const cv::Mat mirrored = mirrorOf(pyramid.upright(scale));
            pyramid.begin(mirrorOf(noise));
            const bool same = cv::norm(mirrored, pyramid.upright(scale), cv::NORM_INF) == 0.0;
            QCOMPARE(mirrorsExactly(width, scale), same);
            uneven += same ? 0 : 1;
        }
    }
    QCOMPARE(uneven, 1);
}

void SharedSearchTest::severalSearchesFindWhatEachFindsAlone() {
    QFETCH(cv::Mat, picture);
    // The frontal cascade's windows are larger, so that with the second minimum it begins at a
    // smaller scale than the profile cascade.
    for (const cv::Size minSize : {cv::Size(), cv::Size(23, 23)}) {
        std::vector<CascadeSearch::Task> tasks{
            {frontal.get()}, {profile.get()}, {frontal.get(), true}, {profile.get(), true}};
        CascadeSearch::searchTogether(picture, tasks, scaleFactor, minSize);
        for (const CascadeSearch::Task& task : tasks) {
            const cv::Mat searched = task.mirrored ? mirrorOf(picture) : picture;
            QCOMPARE(task.found, task.search->candidates(searched, scaleFactor, minSize));
        }
        QVERIFY(!tasks[1].found.empty());
        QCOMPARE(tasks[0].found.empty(), picture.rows < frontal->window().height);
    }
}

/// What is kept of a picture must not be taken for that of another one.
void SharedSearchTest::anotherPictureOfTheSameSizeIsSearchedAnew() {
    for (const unsigned seed : {11U, 12U}) {
        const cv::Mat picture = noisePicture({unevenWidth, 61}, 4, seed);
        CascadeSearch::Task mirrored{profile.get(), true};
        CascadeSearch::searchTogether(picture, {&mirrored, 1}, scaleFactor, {});
        QCOMPARE(mirrored.found, profile->candidates(mirrorOf(picture), scaleFactor, {}));
    }
}

void SharedSearchTest::detectsWhatEachCascadeDetects() {
    QFETCH(cv::Mat, picture);
    cv::CascadeClassifier first = ours(frontalData);
    cv::CascadeClassifier second = ours(profileData);
    // All windows, of which some end behind the picture and have to be clipped; and groups.
    for (const int minNeighbors : {0, 2}) {
        std::vector<PictureSearch> searches{{&first}, {&second}, {&second, true}};
        detectTogether(picture, searches, scaleFactor, minNeighbors, {}, {});
        for (const PictureSearch& search : searches) {
            cv::CascadeClassifier library =
                librarySearching(search.cascade == &first ? frontalData : profileData);
            std::vector<cv::Rect> theirs;
            library.detectMultiScale(search.mirrored ? mirrorOf(picture) : picture, theirs,
                                     scaleFactor, minNeighbors);
            QCOMPARE(sorted(search.hits), sorted(theirs));
        }
    }
}

void SharedSearchTest::oneCascadeOfTheLibraryIsSearchedByIt() {
    const cv::Mat picture = noisePicture({120, 90}, 4, 6);
    cv::CascadeClassifier first = ours(frontalData);
    cv::CascadeClassifier second = librarySearching(profileData);
    std::vector<PictureSearch> searches{{&first}, {&second, true}};
    detectTogether(picture, searches, scaleFactor, 0, {}, {});
    std::vector<cv::Rect> theirs;
    first.detectMultiScale(picture, theirs, scaleFactor, 0);
    QCOMPARE(searches[0].hits, theirs);
    second.detectMultiScale(mirrorOf(picture), theirs, scaleFactor, 0);
    QCOMPARE(sorted(searches[1].hits), sorted(theirs));
}

void SharedSearchTest::aStopEndsIt() {
    const cv::Mat picture = noisePicture({120, 90}, 4, 6);
    std::stop_source stopped;
    stopped.request_stop();
    cv::CascadeClassifier first = ours(frontalData);
    cv::CascadeClassifier second = librarySearching(profileData);
    std::vector<PictureSearch> together{{&first}, {&first, true}};
    detectTogether(picture, together, scaleFactor, 0, {}, stopped.get_token());
    std::vector<PictureSearch> oneByOne{{&first}, {&second}};
    detectTogether(picture, oneByOne, scaleFactor, 0, {}, stopped.get_token());
    for (const auto& searches : {together, oneByOne}) {
        for (const PictureSearch& search : searches)
            QVERIFY(search.hits.empty());
    }
}

QTEST_GUILESS_MAIN(SharedSearchTest)
#include "shared_search_test.moc"
