#include "cascade_pictures.h"
#include "face/cascade_data.h"
#include "face/cascade_search.h"
#include "face/face_options.h"
#include "library_search.h"

#include <QTest>
#include <cmath>
#include <limits>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <random>

namespace {

constexpr double scaleFactor = 1.2;

using Random = std::mt19937;

int below(Random& random, std::size_t end) {
    return static_cast<int>(random() % end);
}

/// One stage of one stump, so that it passes where the comparison says "below".
CascadeData oneComparison(const CascadeData::Feature& feature, cv::Size window, float threshold) {
    CascadeData cascade;
    cascade.window = window;
    cascade.features = {feature};
    cascade.stumps = {{0, threshold, 1.0F, 0.0F}};
    cascade.stages = {{0, 1, 0.5F}};
    return cascade;
}

/// The number that the one window of a picture compares with the threshold: the feature times the
/// norm, in the library's arithmetic.
float compared(const cv::Mat& picture, const CascadeData::Feature& feature) {
    const cv::Mat inner = picture(cv::Rect(1, 1, picture.cols - 2, picture.rows - 2));
    const double sum = cv::sum(inner)[0];
    const double n = static_cast<double>(inner.total()) * inner.dot(inner) - sum * sum;
    float value = 0.0F;
    for (const CascadeData::Part& part : feature)
        value += static_cast<float>(part.weight * cv::sum(picture(part.rect))[0]);
    return value * static_cast<float>(1.0 / std::sqrt(n));
}

/// Few stumps of any shape and sign, with leaves of any size. The stage's threshold is a sum of its
/// leaves, as training leaves it.
CascadeData fewStumps(const CascadeData& source, Random& random) {
    CascadeData cascade;
    cascade.window = source.window;
    for (int stage = 0; stage < 2; ++stage) {
        const std::size_t first = cascade.stumps.size();
        const int count = 1 + below(random, 18);
        std::uniform_real_distribution<float> leaf(-1.0F, 1.0F);
        float threshold = 0.0F;
        for (int i = 0; i < count; ++i) {
            CascadeData::Stump stump =
                source.stumps[static_cast<std::size_t>(below(random, source.stumps.size()))];
            CascadeData::Feature feature = source.features[stump.feature];
            if (below(random, 2) == 0) {
                for (CascadeData::Part& part : feature)
                    part.weight = -part.weight;
                stump.threshold = -stump.threshold;
            }
            stump.feature = cascade.features.size();
            cascade.features.push_back(std::move(feature));
            stump.below = leaf(random);
            stump.otherwise = leaf(random);
            threshold += below(random, 2) == 0 ? stump.below : stump.otherwise;
            cascade.stumps.push_back(stump);
        }
        cascade.stages.push_back({first, static_cast<std::size_t>(count), threshold});
    }
    return cascade;
}

std::optional<CascadeData> sourceOf(bool frontal) {
    return readCascade(frontal ? face::Options().frontalCascadePath
                               : face::Options().profileCascadePath);
}

} // namespace

/// Pictures seldom come near a rounding, so cascades are made here that do.
class CascadeRoundingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void comparesToTheLastBit_data() { addCascades(); }
    void comparesToTheLastBit();
    void decidesSumsThatEqualTheThreshold_data() { addCascades(); }
    void decidesSumsThatEqualTheThreshold();

private:
    static void addCascades() {
        QTest::addColumn<bool>("frontal");
        QTest::newRow("frontal") << true;
        QTest::newRow("profile") << false;
    }
};

/// A norm that is off by one unit in the last place moves some of these comparisons.
void CascadeRoundingTest::comparesToTheLastBit() {
    QFETCH(bool, frontal);
    const auto source = sourceOf(frontal);
    QVERIFY(source);
    Random random(5);
    int compares = 0;
    for (int i = 0; i < 3000; ++i) {
        const cv::Mat picture = noisePicture(source->window, 3, 100U + static_cast<unsigned>(i));
        const auto& feature =
            source->features[static_cast<std::size_t>(below(random, source->features.size()))];
        const float exact = compared(picture, feature);
        if (std::abs(exact) < 1e-4F || std::abs(exact) > 2.0F)
            continue; // beyond what cascades hold
        const float above = std::nextafter(exact, std::numeric_limits<float>::max());
        ++compares;
        for (const float threshold : {exact, above}) {
            const CascadeData cascade = oneComparison(feature, source->window, threshold);
            const std::size_t wanted = threshold > exact ? 1 : 0;
            if (i % 20 == 0) { // making one takes long
                cv::CascadeClassifier library = librarySearching(cascade);
                QCOMPARE(libraryFinds(library, picture, scaleFactor).size(), wanted);
            }
            for (const CascadeKernels& kernels : supportedCascadeKernels()) {
                const auto search = CascadeSearch::make(cascade, kernels);
                QVERIFY(search);
                QCOMPARE(search->candidates(picture, scaleFactor, {}).size(), wanted);
            }
        }
    }
    QVERIFY(compares > 2000);
}

void CascadeRoundingTest::decidesSumsThatEqualTheThreshold() {
    QFETCH(bool, frontal);
    const auto source = sourceOf(frontal);
    QVERIFY(source);
    Random random(6);
    const cv::Mat picture = noisePicture({75, 60}, 4, 12);
    std::size_t found = 0;
    for (int i = 0; i < 150; ++i) {
        const CascadeData cascade = fewStumps(*source, random);
        cv::CascadeClassifier library = librarySearching(cascade);
        const std::vector<cv::Rect> theirs = libraryFinds(library, picture, scaleFactor);
        found += theirs.size();
        for (const CascadeKernels& kernels : supportedCascadeKernels()) {
            const auto search = CascadeSearch::make(cascade, kernels);
            QVERIFY(search);
            QVERIFY2(sorted(search->candidates(picture, scaleFactor, {})) == theirs, kernels.name);
        }
    }
    QVERIFY(found > 1000);
}

QTEST_GUILESS_MAIN(CascadeRoundingTest)
#include "cascade_rounding_test.moc"
