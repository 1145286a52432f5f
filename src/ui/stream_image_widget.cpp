#include "ui/stream_image_widget.h"

#include "ui/stream_geometry.h"
#include "ui/stream_overlay_text.h"
#include "ui/stream_painting.h"
#include "ui/stream_tile_accessible.h"

#include <QAccessible>
#include <QDateTime>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {
constexpr int pictureMargin = 6;
} // namespace

StreamImageWidget::StreamImageWidget(const QString& placeholderText, bool withVoiceOverlay,
                                     QWidget* parent)
    : QWidget(parent), placeholder(placeholderText), showVoiceOverlay(withVoiceOverlay) {
    setObjectName(u"streamImage"_s);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMinimumSize(120, 90);
    installStreamTileAccessibility();
}

StreamImageWidget::~StreamImageWidget() = default;

void StreamImageWidget::setImage(const QImage& image) {
    setFrame(StreamFrame(image));
}

void StreamImageWidget::setFrame(const StreamFrame& newFrame) {
    frame = newFrame;
    update();
    announceNewDescription();
}

void StreamImageWidget::setPlaceholder(const QString& text) {
    placeholder = text;
    update();
    announceNewDescription();
}

void StreamImageWidget::setOverlays(const QList<FaceOverlay>& newOverlays) {
    overlays = newOverlays;
    update();
    announceNewDescription();
}

void StreamImageWidget::setVoiceStatus(const VoiceDirectionStatus& status) {
    voiceStatus = status;
    update();
}

void StreamImageWidget::setSourceCrop(const QRect& crop, const QString& label) {
    sourceCrop = crop;
    sourceCropLabel = label;
    update();
    announceNewDescription();
}

QString StreamImageWidget::description() const {
    if (frame.isNull())
        return streamText::singleLine(placeholder);
    QString text = u"Live picture"_s;
    if (!overlays.isEmpty())
        text += overlays.size() == 1 ? u", 1 person marked"_s
                                     : u", %1 people marked"_s.arg(overlays.size());
    if (!sourceCropLabel.isEmpty())
        text += u". "_s + streamText::singleLine(sourceCropLabel);
    return text;
}

/// Tells screen readers, at most once a second: a banner may change with every frame.
void StreamImageWidget::announceNewDescription() {
    if (!QAccessible::isActive())
        return;
    const QString now = description();
    if (now == announced || !announcements.allows(QDateTime::currentMSecsSinceEpoch()))
        return;
    announced = now;
    QAccessibleEvent event(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
}

QSize StreamImageWidget::sizeHint() const {
    return {960, 540};
}

QSize StreamImageWidget::minimumSizeHint() const {
    return {120, 90};
}

void StreamImageWidget::paintEvent(QPaintEvent*) {
    // The tile paints each of its pixels, so that Qt need not paint what lies below it. Qt clears
    // the attribute whenever a style sheet with rounded borders is applied, hence it is set here.
    setAttribute(Qt::WA_OpaquePaintEvent);
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRect area =
        rect().adjusted(pictureMargin, pictureMargin, -pictureMargin, -pictureMargin);
    if (!paintPicture(painter, area)) {
        painter.fillRect(rect(), streamPainting::backgroundColor);
        streamPainting::paintPlaceholder(painter, placeholder, area);
    }
    streamPainting::paintFrame(painter, size());
    if (showVoiceOverlay)
        streamPainting::paintVoice(painter, voiceStatus, size());
}

/// Paints the image with what belongs to it; false when there is nothing to show or no room.
bool StreamImageWidget::paintPicture(QPainter& painter, const QRect& area) {
    if (frame.isNull() || area.isEmpty())
        return false;
    const QRect source = streamGeometry::sourceRect(sourceCrop, frame.size());
    const StreamFrame shown = source.isEmpty() ? frame : frame.cropped(source);
    const QRect target = streamGeometry::fittedIn(area, shown.size());
    // Scaled to the screen's own pixels and put there one by one, whatever a logical pixel is.
    const QTransform toDevice = painter.deviceTransform();
    const QRect pixels = streamGeometry::devicePixels(toDevice.mapRect(QRectF(target)));
    const QImage& picture = fittedPicture.fit(shown, pixels.size());
    // The background is not painted where the picture hides it: on a dense screen that is a third
    // of the work. Of the picture's outermost logical pixels a part may be background.
    const bool hides = !picture.isNull() && !picture.hasAlphaChannel();
    const QRect hidden = hides ? target.adjusted(1, 1, -1, -1) : QRect();
    for (const QRect& visible : QRegion(rect()) - hidden)
        painter.fillRect(visible, streamPainting::backgroundColor);
    const QTransform logical = painter.worldTransform();
    painter.setWorldTransform(toDevice.inverted() * logical);
    painter.drawImage(pixels.topLeft(), picture);
    painter.setWorldTransform(logical);
    streamPainting::paintOverlays(painter, overlays, {source, shown.size(), target});
    if (!sourceCropLabel.isEmpty())
        streamPainting::paintBanner(painter, sourceCropLabel, width());
    return true;
}
