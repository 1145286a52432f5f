#include "cascade_pictures.h"
#include "face/cascade_data.h"
#include "face/cascade_guard.h"
#include "face/cascade_scales.h"
#include "face/cascade_search.h"
#include "face/face_options.h"
#include "library_search.h"
#include "support/shared_pictures.h"
#include "support/temporary_place.h"

#include <QFile>
#include <QTest>
#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

using namespace Qt::StringLiterals;

namespace {

constexpr double scaleFactor = 1.1;
/// Wide enough that no comparison is certain.
constexpr double nothingCertain = 70000.0;

CascadeData dataOf(const std::string& path) {
    std::optional<CascadeData> data = readCascade(path);
    if (!data)
        qFatal("the cascade is not understood");
    return std::move(*data);
}

bool longTests() {
    return qEnvironmentVariableIsSet("LUMENO_LONG_TESTS");
}

/// The pictures of every run, and with long tests those that people took and larger ones.
std::vector<NamedPicture> pictures() {
    std::vector<NamedPicture> all = cascadePictures();
    if (!longTests())
        return all;
    for (const char* path : {"faces/portrait.png", "recordings/five-people/color/000000.png",
                             "recordings/empty-living-room/color/000000.png",
                             "recordings/kinect-colour-empty-room/000000.jpg"}) {
        const QString file = sharedPicture(QString::fromLatin1(path));
        const cv::Mat picture = cv::imread(file.toStdString(), cv::IMREAD_GRAYSCALE);
        if (picture.empty())
            continue;
        for (int width = 60; width <= 700; width += 37) {
            cv::Mat scaled;
            const double factor = double(width) / picture.cols;
            cv::resize(picture, scaled, cv::Size(), factor, factor, cv::INTER_AREA);
            cv::equalizeHist(scaled, scaled);
            all.push_back({std::string(path) + " " + std::to_string(width), scaled});
        }
    }
    for (int i = 0; i < 60; ++i) {
        const cv::Size size(100 + 13 * i, 70 + 7 * i);
        all.push_back(
            {"noise " + std::to_string(i), noisePicture(size, 1 + i % 7, unsigned(900 + i))});
    }
    return all;
}

struct Cascades {
    CascadeData frontal = dataOf(face::Options().frontalCascadePath);
    CascadeData profile = dataOf(face::Options().profileCascadePath);
};

const Cascades& cascades() {
    static const Cascades both;
    return both;
}

} // namespace

class CascadeSearchTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsWhatTheLibraryFinds_data();
    void findsWhatTheLibraryFinds();
    void sumsUpEveryWindowExactly_data();
    void sumsUpEveryWindowExactly();
    void otherScaleFactorsAndMinimumSizes();
    void groupsAreTheLibrarysGroups();
    void candidatesComeInOrderOfScaleRowAndColumn();
    void theLastRowIsNotLookedAtWhereStripsDivideEvenly();
    void contrastIsDecidedByTheFloatNorm();
    void searchesWithTheSameMemoryAnotherPicture();
    void takesTheLibrarysPlace();
    void othersThanGreyPicturesGoToTheLibrary();
    void unknownCascadesAreLeftToTheLibrary_data();
    void unknownCascadesAreLeftToTheLibrary();
    void damagedFilesAreRefusedWithoutACrash();
};

void CascadeSearchTest::findsWhatTheLibraryFinds_data() {
    QTest::addColumn<bool>("frontal");
    QTest::addColumn<int>("stages");
    for (const bool frontal : {true, false}) {
        for (const int stages : {1, 2, 3, 5, 9, 14, 30})
            QTest::addRow("%s, %d stages", frontal ? "frontal" : "profile", stages)
                << frontal << stages;
    }
}

/// With few stages thousands of windows pass, so that each quirk of the search shows.
void CascadeSearchTest::findsWhatTheLibraryFinds() {
    QFETCH(bool, frontal);
    QFETCH(int, stages);
    const CascadeData& whole = frontal ? cascades().frontal : cascades().profile;
    const CascadeData cut = cutCascade(whole, static_cast<std::size_t>(stages));
    cv::CascadeClassifier library = librarySearching(cut);
    std::vector<std::unique_ptr<CascadeSearch>> searches;
    for (const CascadeKernels& kernels : supportedCascadeKernels()) {
        searches.push_back(CascadeSearch::make(cut, kernels));
        QVERIFY(searches.back());
    }
    for (const NamedPicture& next : pictures()) {
        const std::vector<cv::Rect> theirs = libraryFinds(library, next.picture, scaleFactor);
        for (std::size_t i = 0; i < searches.size(); ++i) {
            const auto ours = searches[i]->candidates(next.picture, scaleFactor, {});
            QVERIFY2(sorted(ours) == theirs,
                     (next.name + " " + supportedCascadeKernels()[i].name).c_str());
        }
    }
}

void CascadeSearchTest::sumsUpEveryWindowExactly_data() {
    QTest::addColumn<bool>("frontal");
    QTest::newRow("frontal") << true;
    QTest::newRow("profile") << false;
}

/// The exact summing decides few windows, so it is tried here with all.
void CascadeSearchTest::sumsUpEveryWindowExactly() {
    QFETCH(bool, frontal);
    const CascadeData cut = cutCascade(frontal ? cascades().frontal : cascades().profile, 4);
    cv::CascadeClassifier library = librarySearching(cut);
    for (const CascadeKernels& kernels : supportedCascadeKernels()) {
        const auto search = CascadeSearch::make(cut, kernels, nothingCertain);
        QVERIFY(search);
        for (const NamedPicture& next : cascadePictures()) {
            QVERIFY2(sorted(search->candidates(next.picture, scaleFactor, {})) ==
                         libraryFinds(library, next.picture, scaleFactor),
                     (next.name + " " + kernels.name).c_str());
        }
    }
}

void CascadeSearchTest::otherScaleFactorsAndMinimumSizes() {
    const CascadeData cut = cutCascade(cascades().profile, 3);
    cv::CascadeClassifier library = librarySearching(cut);
    const auto search = CascadeSearch::make(cut, supportedCascadeKernels().front());
    const cv::Mat picture = noisePicture({157, 119}, 4, 77);
    for (const double factor : {1.01, 1.05, 1.1, 1.2, 1.37, 2.0, 7.5}) {
        for (const cv::Size minSize :
             {cv::Size(), cv::Size(15, 15), cv::Size(21, 21), cv::Size(22, 22), cv::Size(80, 80),
              cv::Size(30, 90), cv::Size(119, 119), cv::Size(500, 500)}) {
            QCOMPARE(sorted(search->candidates(picture, factor, minSize)) ==
                         libraryFinds(library, picture, factor, minSize),
                     true);
        }
    }
}

void CascadeSearchTest::groupsAreTheLibrarysGroups() {
    for (const std::string& path :
         {face::Options().frontalCascadePath, face::Options().profileCascadePath}) {
        cv::CascadeClassifier library(path);
        cv::CascadeClassifier ours(path);
        QCOMPARE(replaceCascadeSearch(ours, path), std::string());
        int found = 0;
        for (const NamedPicture& next : pictures()) {
            std::vector<cv::Rect> theirs;
            std::vector<cv::Rect> hits;
            library.detectMultiScale(next.picture, theirs, scaleFactor, 2);
            ours.detectMultiScale(next.picture, hits, scaleFactor, 2);
            QVERIFY2(sorted(hits) == sorted(theirs), next.name.c_str());
            found += static_cast<int>(hits.size());
        }
        QVERIFY(path == face::Options().profileCascadePath || found > 0);
    }
}

void CascadeSearchTest::candidatesComeInOrderOfScaleRowAndColumn() {
    const auto search =
        CascadeSearch::make(cutCascade(cascades().frontal, 2), supportedCascadeKernels().front());
    const auto found = search->candidates(noisePicture({160, 120}, 5, 3), scaleFactor, {});
    QVERIFY(found.size() > 1000);
    QVERIFY(found == sorted(found));
}

void CascadeSearchTest::theLastRowIsNotLookedAtWhereStripsDivideEvenly() {
    const cv::Size window(24, 24);
    // 101 columns of windows make 4 strips. Of 25 rows of places every second is looked at: 12
    // rounded down, which 4 divides, so the 13th row, at place 24, is in no strip.
    const auto missing = cascadeScales({124, 48}, window, 3.0, {});
    QCOMPARE(missing.size(), std::size_t{1});
    QCOMPARE(missing[0].windows.height, 12);
    // Of 27 places 13 and then 14 rows remain: four strips of four hold them all.
    const auto all = cascadeScales({124, 50}, window, 3.0, {});
    QCOMPARE(all[0].windows.height, 14);
}

/// A window belongs to the search if its area times the float norm is below 0.1.
void CascadeSearchTest::contrastIsDecidedByTheFloatNorm() {
    for (const double area : {324.0, 484.0}) {
        const double edge = (area / 0.1) * (area / 0.1);
        for (double n = std::floor(edge) - 50.0; n < edge + 50.0; n += 1.0) {
            const float norm = static_cast<float>(1.0 / std::sqrt(n));
            QCOMPARE(CascadeTables::hasContrast(area, n), area * double(norm) < 0.1);
        }
        QVERIFY(!CascadeTables::hasContrast(area, 0.0));
    }
}

void CascadeSearchTest::searchesWithTheSameMemoryAnotherPicture() {
    const CascadeData cut = cutCascade(cascades().frontal, 3);
    const auto search = CascadeSearch::make(cut, supportedCascadeKernels().front());
    const cv::Mat large = noisePicture({400, 300}, 6, 8);
    const cv::Mat small = noisePicture({61, 43}, 3, 9);
    const auto first = search->candidates(small, scaleFactor, {});
    search->candidates(large, scaleFactor, {});
    QVERIFY(search->candidates(small, scaleFactor, {}) == first);
    QVERIFY(search->candidates(cv::Mat(), scaleFactor, {}).empty());
}

void CascadeSearchTest::takesTheLibrarysPlace() {
    cv::CascadeClassifier cascade(face::Options().frontalCascadePath);
    const auto library = cascade.cc;
    QCOMPARE(replaceCascadeSearch(cascade, face::Options().frontalCascadePath), std::string());
    QVERIFY(cascade.cc != library);
    QCOMPARE(cascade.getOriginalWindowSize(), library->getOriginalWindowSize());
    QVERIFY(!cascade.empty());
    std::vector<cv::Rect> hits{{1, 2, 3, 4}};
    QVERIFY_THROWS_EXCEPTION(cv::Exception,
                             cascade.detectMultiScale(noisePicture({60, 60}, 3, 1), hits, 1.0));
}

void CascadeSearchTest::othersThanGreyPicturesGoToTheLibrary() {
    cv::CascadeClassifier library(face::Options().frontalCascadePath);
    cv::CascadeClassifier cascade(face::Options().frontalCascadePath);
    replaceCascadeSearch(cascade, face::Options().frontalCascadePath);
    const cv::Mat grey = cascadePictures().back().picture;
    cv::Mat color;
    cv::cvtColor(grey, color, cv::COLOR_GRAY2BGR);
    std::vector<cv::Rect> theirs;
    std::vector<cv::Rect> hits;
    library.detectMultiScale(color, theirs, scaleFactor, 0);
    cascade.detectMultiScale(color, hits, scaleFactor, 0);
    QVERIFY(sorted(hits) == sorted(theirs));
    library.detectMultiScale(grey, theirs, scaleFactor, 0, 0, {}, {40, 40});
    cascade.detectMultiScale(grey, hits, scaleFactor, 0, 0, {}, {40, 40});
    QVERIFY(sorted(hits) == sorted(theirs));
}

void CascadeSearchTest::unknownCascadesAreLeftToTheLibrary_data() {
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::newRow("tilted") << QByteArray("tilted: 0") << QByteArray("tilted: 1");
    QTest::newRow("local binary patterns") << QByteArray("HAAR") << QByteArray("LBP");
    QTest::newRow("a window too large") << QByteArray("width: 24") << QByteArray("width: 40");
    QTest::newRow("another weight") << QByteArray("- -1\n") << QByteArray("- -2\n");
    QTest::newRow("a broken weight") << QByteArray("- -1\n") << QByteArray("- -1.5\n");
}

void CascadeSearchTest::unknownCascadesAreLeftToTheLibrary() {
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    const TemporaryPlace place;
    QByteArray text = QByteArray::fromStdString(cascadeText(cutCascade(cascades().frontal, 2)));
    QVERIFY(text.contains(from));
    text.replace(text.lastIndexOf(from), from.size(), to);
    QFile file(u"cascade.yml"_s);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();
    cv::CascadeClassifier cascade(face::Options().frontalCascadePath);
    const auto library = cascade.cc;
    QVERIFY(!replaceCascadeSearch(cascade, "cascade.yml").empty());
    QVERIFY(cascade.cc == library);
}

void CascadeSearchTest::damagedFilesAreRefusedWithoutACrash() {
    const QByteArray whole =
        QByteArray::fromStdString(cascadeText(cutCascade(cascades().frontal, 2)));
    const cv::Mat picture = noisePicture({60, 50}, 4, 5);
    const int step = longTests() ? 1 : 97;
    int understood = 0;
    for (qsizetype at = 0; at < whole.size(); at += step) {
        for (const char byte : {'\0', '9', '-', '['}) {
            QByteArray damaged = byte == '\0' ? whole.left(at) : whole;
            if (byte != '\0')
                damaged[at] = byte;
            try {
                const auto data = parseCascade(damaged.toStdString());
                const auto search =
                    data ? CascadeSearch::make(*data, supportedCascadeKernels().front()) : nullptr;
                if (search)
                    search->candidates(picture, scaleFactor, {});
                understood += search ? 1 : 0;
            } catch (const cv::Exception&) {
                // A file that cannot be parsed: loading it fails before the search is made.
            }
        }
    }
    // A digit more or less in a threshold leaves a cascade that can be searched.
    QVERIFY(understood > 0);
}

QTEST_GUILESS_MAIN(CascadeSearchTest)
#include "cascade_search_test.moc"
