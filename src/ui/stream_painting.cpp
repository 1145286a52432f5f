#include "ui/stream_painting.h"

#include "ui/stream_overlay_text.h"

using namespace Qt::StringLiterals;

const QColor streamPainting::backgroundColor(7, 11, 16);

namespace {

constexpr QColor placeholderColor(160, 176, 196);
constexpr QColor frameColor(52, 66, 84);
constexpr qreal boxRadius = 4.0;
constexpr qreal frameRadius = 6.0;
constexpr int stripeWidth = 4;
constexpr int minimumVoiceTextHeight = 150;

struct BannerColors {
    QColor fill;
    QColor text;
};
constexpr BannerColors followBanner{QColor(24, 58, 35, 220), QColor(225, 255, 235)};
constexpr BannerColors cropBanner{QColor(10, 16, 24, 180), QColor(220, 235, 250)};
constexpr QColor followBannerOutline(91, 232, 134);

struct LightColors {
    QColor fill;
    QColor outline;
};
constexpr LightColors idleLight{QColor(41, 50, 64), QColor(78, 91, 108)};
constexpr LightColors confidentLight{QColor(91, 232, 134), QColor(205, 255, 220)};
constexpr LightColors uncertainLight{QColor(105, 112, 124), QColor(150, 158, 170)};
constexpr QColor firstVoiceLineColor(190, 205, 222);
constexpr QColor secondVoiceLineColor(140, 154, 174);

QColor withAlpha(QColor color, int alpha) {
    color.setAlpha(alpha);
    return color;
}

QFont sizedFont(const QFont& font, int pointSize) {
    QFont sized = font;
    sized.setPointSize(pointSize);
    return sized;
}

void drawElided(QPainter& painter, const QRect& rect, int width, int alignment,
                const QString& text) {
    if (rect.isValid() && width > 0)
        painter.drawText(rect, alignment,
                         painter.fontMetrics().elidedText(text, Qt::ElideRight, width));
}

QPen boxPen(const FaceOverlay& overlay) {
    const int width = overlay.bodyOnly || overlay.stale ? 2 : 3;
    const Qt::PenStyle style = overlay.bodyOnly ? Qt::DashDotLine
                               : overlay.stale  ? Qt::DashLine
                                                : Qt::SolidLine;
    return {overlay.color, qreal(width), style};
}

void paintCaption(QPainter& painter, const FaceOverlay& overlay, const QRect& box,
                  const QRect& imageTarget) {
    const QString text = streamText::caption(overlay);
    const QRect tag =
        streamGeometry::captionTag(box, painter.fontMetrics().horizontalAdvance(text), imageTarget);
    const QColor tagColor = overlay.stale ? withAlpha(overlay.color, 165) : overlay.color;
    painter.setPen(QPen(tagColor, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(tag, boxRadius, boxRadius);
    painter.fillRect(tag.left(), tag.top(), stripeWidth, tag.height(), tagColor);

    painter.setPen(overlay.stale ? withAlpha(overlay.color, 190) : overlay.color);
    const QRect textRect(QPoint(tag.left() + 8, tag.top()),
                         QPoint(tag.left() + tag.width() - 8, tag.top() + 21));
    drawElided(painter, textRect, tag.width() - 15, Qt::AlignLeft | Qt::AlignVCenter, text);
}

void paintLights(QPainter& painter, const VoiceDirectionStatus& status, const QSize& widgetSize) {
    const std::optional<int> active = streamText::activeSpeakerLight(status);
    for (int index = 0; index < streamGeometry::speakerLightCount; ++index) {
        const LightColors& colors = index != active        ? idleLight
                                    : status.lowConfidence ? uncertainLight
                                                           : confidentLight;
        painter.setPen(QPen(colors.outline, 1));
        painter.setBrush(colors.fill);
        painter.drawRoundedRect(streamGeometry::speakerLight(index, widgetSize), boxRadius,
                                boxRadius);
    }
}

} // namespace

void streamPainting::paintOverlays(QPainter& painter, const QList<FaceOverlay>& overlays,
                                   const streamGeometry::ImagePlacement& placement) {
    for (const FaceOverlay& overlay : overlays) {
        const std::optional<QRect> box = streamGeometry::screenBox(overlay.rect, placement);
        if (!box)
            continue;
        painter.setPen(boxPen(overlay));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(*box, boxRadius, boxRadius);
        paintCaption(painter, overlay, *box, placement.target);
    }
}

void streamPainting::paintBanner(QPainter& painter, const QString& text, int widgetWidth) {
    const QRect banner = streamGeometry::bannerRect(widgetWidth);
    if (banner.isEmpty())
        return;
    const bool following = text.contains(u"VISIBLE FOLLOW ZOOM ACTIVE"_s);
    const BannerColors& colors = following ? followBanner : cropBanner;
    painter.fillRect(banner, colors.fill);
    if (following) {
        painter.setPen(QPen(followBannerOutline, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(banner.adjusted(0, 0, -1, -1), boxRadius, boxRadius);
    }
    const QFont widgetFont = painter.font();
    QFont font = sizedFont(widgetFont, widgetWidth < 520 ? 9 : 11);
    font.setWeight(following ? QFont::Bold : QFont::Normal);
    painter.setFont(font);
    painter.setPen(colors.text);
    drawElided(painter, banner.adjusted(8, 0, -8, 0), banner.width() - 16,
               Qt::AlignLeft | Qt::AlignVCenter, streamText::singleLine(text));
    painter.setFont(widgetFont);
}

void streamPainting::paintPlaceholder(QPainter& painter, const QString& text, const QRect& area) {
    painter.setPen(placeholderColor);
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, streamText::singleLine(text));
}

void streamPainting::paintFrame(QPainter& painter, const QSize& widgetSize) {
    painter.setPen(QPen(frameColor, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(0, 0, widgetSize.width() - 1, widgetSize.height() - 1, frameRadius,
                            frameRadius);
}

void streamPainting::paintVoice(QPainter& painter, const VoiceDirectionStatus& status,
                                const QSize& widgetSize) {
    paintLights(painter, status, widgetSize);
    if (widgetSize.height() < minimumVoiceTextHeight)
        return;
    const QFont widgetFont = painter.font();
    painter.setFont(sizedFont(widgetFont, widgetSize.width() < 520 ? 8 : 9));
    const streamText::VoiceLines lines = streamText::voiceLines(status);
    const int width = widgetSize.width() - 1 - 15;
    painter.setPen(firstVoiceLineColor);
    drawElided(painter, streamGeometry::firstVoiceLine(widgetSize), width, Qt::AlignCenter,
               lines.first);
    painter.setPen(secondVoiceLineColor);
    drawElided(painter, streamGeometry::secondVoiceLine(widgetSize), width, Qt::AlignCenter,
               lines.second);
    painter.setFont(widgetFont);
}
