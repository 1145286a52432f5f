#include "ui/fitted_picture.h"

#include "frames/pictures.h"

#include <QTest>

class FittedPictureTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aNullFrameGivesANullPicture();
    void aFittedPictureIsMadeOnceForTheSameQuestion();
    void aFittedPictureFollowsFramePartAndSize();
    void aPictureThatIsStillHeldIsNotWrittenAgain();
};

void FittedPictureTest::aNullFrameGivesANullPicture() {
    QVERIFY(FittedPicture().fit(StreamFrame(), QSize(10, 10)).isNull());
}

void FittedPictureTest::aFittedPictureIsMadeOnceForTheSameQuestion() {
    const StreamFrame frame(patternedImage(QSize(80, 60), QImage::Format_RGB888));
    FittedPicture fitted;
    const qint64 key = fitted.fit(frame, QSize(40, 40)).cacheKey();
    const StreamFrame sameFrame = frame;
    QCOMPARE(fitted.fit(sameFrame, QSize(40, 40)).cacheKey(), key);
}

void FittedPictureTest::aFittedPictureFollowsFramePartAndSize() {
    const QImage image = patternedImage(QSize(83, 61), QImage::Format_RGB888);
    const StreamFrame frame(image);
    FittedPicture fitted;
    const auto expected = [](const QImage& source, const QSize& size) {
        return source.convertToFormat(QImage::Format_RGB32)
            .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    QCOMPARE(fitted.fit(frame, QSize(40, 41)), expected(image, QSize(40, 41)));
    QCOMPARE(fitted.fit(frame, QSize(41, 40)), expected(image, QSize(41, 40)));
    const QRect part(10, 10, 31, 17);
    QCOMPARE(fitted.fit(frame.cropped(part), QSize(41, 40)),
             expected(image.copy(part), QSize(41, 40)));
    const QRect moved = part.translated(1, 0);
    QCOMPARE(fitted.fit(frame.cropped(moved), QSize(41, 40)),
             expected(image.copy(moved), QSize(41, 40)));
    const QImage next = patternedImage(QSize(83, 61), QImage::Format_RGB888, 3);
    QCOMPARE(fitted.fit(StreamFrame(next).cropped(moved), QSize(41, 40)),
             expected(next.copy(moved), QSize(41, 40)));
}

void FittedPictureTest::aPictureThatIsStillHeldIsNotWrittenAgain() {
    FittedPicture fitted;
    const QImage source = patternedImage(QSize(80, 60), QImage::Format_RGB888);
    const QImage held = fitted.fit(StreamFrame(source), QSize(40, 40));
    const QImage before = held.copy();
    fitted.fit(StreamFrame(patternedImage(QSize(80, 60), QImage::Format_RGB888, 5)), QSize(40, 40));
    QCOMPARE(held, before);
}

QTEST_APPLESS_MAIN(FittedPictureTest)
#include "fitted_picture_test.moc"
