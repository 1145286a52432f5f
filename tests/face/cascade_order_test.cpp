#include "face/cascade_order.h"

#include "cascade_pictures.h"
#include "face/cascade_search.h"
#include "face/face_options.h"

#include <QTest>
#include <algorithm>
#include <cmath>

namespace {

constexpr double scaleFactor = 1.1;
/// Below every sum of a stage, so that all windows pass, and above every one.
constexpr float passes = -1000.0F;
constexpr float fails = 1000.0F;

CascadeData frontal() {
    std::optional<CascadeData> data = readCascade(face::Options().frontalCascadePath);
    if (!data)
        qFatal("the cascade is not understood");
    return std::move(*data);
}

/// Thresholds tell which stage is which.
std::vector<float> thresholds(const CascadeData& cascade) {
    std::vector<float> all;
    for (const CascadeData::Stage& stage : cascade.stages)
        all.push_back(stage.threshold);
    return all;
}

} // namespace

class CascadeOrderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aStageThatLeavesAllOutComesBeforeOneThatLeavesNoneOut();
    void aStageWithFewerStumpsComesBeforeOneThatLeavesAsManyOut();
    void onlyWindowsThatAreLeftCount();
    void blocksOfNeighboursCountAndNotWindows();
    void theFirstStageKeepsItsPlace();
    void everyStageIsThereOnce();
    void findsTheSameInAnyOrder();
    void leavesFewAndVeryManyStagesAsTheyAre();
};

void CascadeOrderTest::aStageThatLeavesAllOutComesBeforeOneThatLeavesNoneOut() {
    CascadeData cascade = cutCascade(frontal(), 5);
    cascade.stages[2].threshold = passes;
    cascade.stages[4].threshold = fails;
    const float third = cascade.stages[3].threshold;
    const std::vector<float> order = thresholds(quicklyOrdered(cascade, trialPictures().front()));
    QCOMPARE(order[1], fails);
    QVERIFY(std::find(order.begin() + 2, order.end(), passes) != order.end());
    QVERIFY(std::find(order.begin() + 2, order.end(), third) != order.end());
}

void CascadeOrderTest::aStageWithFewerStumpsComesBeforeOneThatLeavesAsManyOut() {
    const CascadeData whole = frontal();
    CascadeData cascade = withStages(whole, {0, 1, 9, 3});
    QVERIFY(cascade.stages[2].stumpCount > cascade.stages[3].stumpCount);
    cascade.stages[2].threshold = fails;
    cascade.stages[3].threshold = fails + 1.0F;
    QCOMPARE(thresholds(quicklyOrdered(cascade, trialPictures().front()))[1], fails + 1.0F);
}

/// A stage leaves nothing out that its double has left out already.
void CascadeOrderTest::onlyWindowsThatAreLeftCount() {
    const std::vector<float> order =
        thresholds(quicklyOrdered(withStages(frontal(), {0, 2, 2, 3, 3}), trialPictures().front()));
    QVERIFY(order[1] != order[2]);
}

/// The left half of the picture gets brighter to the right and the other one darker, below grain.
/// One stage leaves the right half out, another one more windows than that, but here and there.
void CascadeOrderTest::blocksOfNeighboursCountAndNotWindows() {
    cv::Mat picture(60, 201, CV_32F);
    cv::RNG(1).fill(picture, cv::RNG::NORMAL, 0.0, 12.0);
    for (int x = 0; x < picture.cols; ++x)
        picture.col(x) += 230 - std::abs(x - 100);
    picture.convertTo(picture, CV_8U, 0.8);
    const CascadeData::Feature getsBrighter{{cv::Rect(0, 0, 24, 24), -1},
                                            {cv::Rect(12, 0, 12, 24), 2}};
    const CascadeData::Feature grain{{cv::Rect(11, 11, 2, 1), -1}, {cv::Rect(12, 11, 1, 1), 2}};
    // Windows pass stage 1 where the grain is above a little more than nothing.
    const CascadeData cascade{
        {24, 24},
        {grain, getsBrighter},
        {{0, 0.0F, 1.0F, 1.0F}, {0, 0.0015F, -1.0F, 1.0F}, {1, 0.0F, -1.0F, 1.0F}},
        {{0, 1, 0.0F}, {1, 1, 0.01F}, {2, 1, 0.02F}}};
    const auto left = [&](std::size_t stage) {
        const auto search =
            CascadeSearch::make(withStages(cascade, {0, stage}), supportedCascadeKernels().front());
        return search->candidates(picture, scaleFactor, {}).size();
    };
    QVERIFY(left(1) > 100);
    QVERIFY(left(1) < left(2));
    QCOMPARE(thresholds(quicklyOrdered(cascade, picture)), (std::vector{0.0F, 0.02F, 0.01F}));
}

void CascadeOrderTest::theFirstStageKeepsItsPlace() {
    CascadeData cascade = cutCascade(frontal(), 4);
    cascade.stages[0].threshold = passes;
    cascade.stages[3].threshold = fails;
    const std::vector<float> order = thresholds(quicklyOrdered(cascade, trialPictures().front()));
    QCOMPARE(order[0], passes);
    QCOMPARE(order[1], fails);
}

void CascadeOrderTest::everyStageIsThereOnce() {
    const CascadeData whole = frontal();
    const CascadeData ordered = quicklyOrdered(whole, trialPictures().front());
    QCOMPARE(ordered.stumps.size(), whole.stumps.size());
    QVERIFY(std::ranges::is_permutation(thresholds(ordered), thresholds(whole)));
    QVERIFY(thresholds(ordered) != thresholds(whole));
}

void CascadeOrderTest::findsTheSameInAnyOrder() {
    const CascadeData cascade = cutCascade(frontal(), 6);
    const CascadeKernels& kernels = supportedCascadeKernels().front();
    const auto asItIs = CascadeSearch::make(cascade, kernels);
    const auto otherwise = CascadeSearch::make(withStages(cascade, {0, 5, 3, 1, 4, 2}), kernels);
    std::size_t found = 0;
    for (const NamedPicture& next : cascadePictures()) {
        const auto candidates = asItIs->candidates(next.picture, scaleFactor, {});
        QVERIFY2(otherwise->candidates(next.picture, scaleFactor, {}) == candidates,
                 next.name.c_str());
        found += candidates.size();
    }
    QVERIFY(found > 100);
}

void CascadeOrderTest::leavesFewAndVeryManyStagesAsTheyAre() {
    const CascadeData whole = frontal();
    std::vector<std::size_t> many;
    for (std::size_t i = 0; i < 100; ++i)
        many.push_back(i % whole.stages.size());
    for (const CascadeData& cascade : {cutCascade(whole, 1), withStages(whole, many)}) {
        QCOMPARE(thresholds(quicklyOrdered(cascade, trialPictures().front())), thresholds(cascade));
    }
}

QTEST_GUILESS_MAIN(CascadeOrderTest)
#include "cascade_order_test.moc"
