#include "ui/plain_stream_painter.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

void elided(QPainter& p, const QRect& rect, int width, int flags, const QString& text) {
    p.drawText(rect, flags, p.fontMetrics().elidedText(text, Qt::ElideRight, width));
}

QString captionOf(const FaceOverlay& o) {
    QString text = o.label;
    if (!o.tier.isEmpty())
        text += u" • "_s + o.tier;
    if (o.hasDistance)
        text += u" • %1m"_s.arg(o.distanceMeters, 0, 'f', 1);
    else if (o.depthMissing)
        text += u" • no depth"_s;
    if (!o.speakerNote.isEmpty())
        text += u" • "_s + o.speakerNote;
    if (o.stale)
        text += u" - "_s + o.status;
    const int r = int(o.confidence + 0.5);
    if (r > 0)
        text += u" %1"_s.arg(r);
    return text;
}

void overlay(QPainter& p, const FaceOverlay& o, const QRect& source, const QSize& shown,
             const QRect& image) {
    const double sx = double(image.width()) / shown.width();
    const double sy = double(image.height()) / shown.height();
    const QRect moved = source.isEmpty() ? o.rect : o.rect.translated(-source.topLeft());
    if (!source.isEmpty() && !moved.intersects(QRect(QPoint(0, 0), source.size())))
        return;
    const QRect box =
        QRect(int(moved.left() * sx) + image.left(), int(moved.top() * sy) + image.top(),
              int(moved.width() * sx), int(moved.height() * sy))
            .intersected(image);
    if (box.isEmpty())
        return;
    QPen pen(o.color);
    pen.setWidth(o.bodyOnly || o.stale ? 2 : 3);
    if (o.bodyOnly)
        pen.setStyle(Qt::DashDotLine);
    else if (o.stale)
        pen.setStyle(Qt::DashLine);
    p.setPen(pen);
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(box, 4, 4);

    const QString text = captionOf(o);
    int width = p.fontMetrics().horizontalAdvance(text) + 14;
    if (width < 74)
        width = 74;
    if (width > image.width())
        width = image.width();
    int left = box.left();
    if (left > image.right() - width)
        left = image.right() - width;
    if (left < image.left())
        left = image.left();
    int top = box.top() - 25;
    if (top < image.top())
        top = image.top();
    QColor tagColor = o.color;
    QColor textColor = o.color;
    if (o.stale) {
        tagColor.setAlpha(165);
        textColor.setAlpha(190);
    }
    p.setPen(QPen(tagColor, 2));
    p.drawRoundedRect(QRect(left, top, width, 22), 4, 4);
    p.fillRect(QRect(left, top, 4, 22), tagColor);
    p.setPen(textColor);
    elided(p, QRect(QPoint(left + 8, top), QPoint(left + width - 8, top + 21)), width - 15,
           Qt::AlignLeft | Qt::AlignVCenter, text);
}

void banner(QPainter& p, const QString& label, int widgetWidth) {
    p.save();
    const bool follow = label.contains(u"VISIBLE FOLLOW ZOOM ACTIVE"_s, Qt::CaseSensitive);
    QFont font = p.font();
    font.setPointSize(widgetWidth < 520 ? 9 : 11);
    font.setWeight(follow ? QFont::Bold : QFont::Normal);
    p.setFont(font);
    const QRect rect(QPoint(8, 8), QPoint(widgetWidth - 9, 33));
    if (follow) {
        p.fillRect(rect, QColor(24, 58, 35, 220));
        p.setPen(QPen(QColor(91, 232, 134), 2));
        p.setBrush(Qt::NoBrush);
        p.drawRoundedRect(rect.adjusted(0, 0, -1, -1), 4, 4);
        p.setPen(QColor(225, 255, 235));
    } else {
        p.fillRect(rect, QColor(10, 16, 24, 180));
        p.setPen(QColor(220, 235, 250));
    }
    elided(p, QRect(QPoint(rect.left() + 8, rect.top()), QPoint(rect.right() - 8, rect.bottom())),
           rect.width() - 16, Qt::AlignLeft | Qt::AlignVCenter, label);
    p.restore();
}

void lights(QPainter& p, const VoiceDirectionStatus& voice, const QSize& size) {
    const bool wide = size.width() >= 420;
    int left = (size.width() - 1) / 2 - (wide ? 83 : 60);
    const int top = size.height() - 1 - (size.height() >= 170 ? 44 : 24);
    int active = -1;
    if (voice.fresh && voice.hasDirection) {
        const double t = (60 + voice.angleDegrees) / 120;
        active = t < 0 ? 0 : t > 0.999 ? 5 : int(t * 6);
        if (voice.inverted)
            active = 5 - active;
    }
    for (int index = 0; index < 6; ++index) {
        QColor fill(41, 50, 64);
        QColor outline(78, 91, 108);
        if (index == active && voice.lowConfidence) {
            fill = QColor(105, 112, 124);
            outline = QColor(150, 158, 170);
        } else if (index == active) {
            fill = QColor(91, 232, 134);
            outline = QColor(205, 255, 220);
        }
        p.setPen(QPen(outline, 1));
        p.setBrush(fill);
        p.drawRoundedRect(QRect(left, top, wide ? 22 : 16, 8), 4, 4);
        left += wide ? 29 : 21;
    }
}

void voiceText(QPainter& p, const VoiceDirectionStatus& voice, const QSize& size) {
    QString first = u"Speaker direction unavailable / no fresh data"_s;
    QString second = voice.reason;
    if (voice.fresh && voice.hasDirection) {
        first = u"Speaker direction: %1° confidence %2 | mapping %3"_s
                    .arg(voice.angleDegrees, 0, 'f', 0)
                    .arg(voice.confidence, 0, 'f', 2)
                    .arg(voice.inverted ? u"inverted"_s : u"normal"_s);
        second = voice.lowConfidence ? u"low confidence - attention only"_s
                                     : u"live Auralis direction - attention only"_s;
    } else if (voice.running) {
        first = u"Auralis running; no fresh direction data"_s;
    }
    const int w = size.width() - 1;
    const int h = size.height() - 1;
    QFont font = p.font();
    font.setPointSize(size.width() < 520 ? 8 : 9);
    p.setFont(font);
    p.setPen(QColor(190, 205, 222));
    elided(p, QRect(QPoint(8, h - 30), QPoint(w - 8, h - 15)), w - 15, Qt::AlignCenter, first);
    p.setPen(QColor(140, 154, 174));
    elided(p, QRect(QPoint(8, h - 15), QPoint(w - 8, h - 2)), w - 15, Qt::AlignCenter, second);
}

bool picture(QPainter& p, const StreamScene& scene, const QRect& area, int widgetWidth) {
    QRect source;
    if (scene.crop.isValid())
        source = scene.crop.intersected(scene.image.rect());
    QImage shown = scene.image;
    if (!scene.image.isNull() && !source.isEmpty())
        shown = scene.image.copy(source);
    if (shown.isNull() || area.width() < 1 || area.height() < 1)
        return false;
    const QImage scaled = shown.convertToFormat(QImage::Format_RGB32)
                              .scaled(area.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    const QRect image(area.left() + (area.width() - scaled.width()) / 2,
                      area.top() + (area.height() - scaled.height()) / 2, scaled.width(),
                      scaled.height());
    if (const qreal ratio = p.device()->devicePixelRatio(); ratio == 1.0) {
        p.drawImage(image.topLeft(), scaled);
    } else { // as many pixels as the device has there, put there without another scaling
        const int left = qRound(image.left() * ratio);
        const int top = qRound(image.top() * ratio);
        const QSize pixels(qRound((image.left() + image.width()) * ratio) - left,
                           qRound((image.top() + image.height()) * ratio) - top);
        p.save();
        p.scale(1.0 / ratio, 1.0 / ratio);
        p.drawImage(left, top,
                    shown.convertToFormat(QImage::Format_RGB32)
                        .scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        p.restore();
    }
    for (const FaceOverlay& each : scene.overlays)
        overlay(p, each, source, shown.size(), image);
    if (!scene.label.isEmpty())
        banner(p, scene.label, widgetWidth);
    return true;
}

} // namespace

QImage paintPlainly(const StreamScene& scene, const QSize& size, const QFont& font,
                    qreal devicePixelRatio) {
    QImage target(size * devicePixelRatio, QImage::Format_RGB32);
    target.setDevicePixelRatio(devicePixelRatio);
    target.fill(Qt::magenta);
    QPainter p(&target);
    p.setFont(font);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    p.fillRect(QRect(QPoint(0, 0), size), QColor(7, 11, 16));
    const QRect area(6, 6, size.width() - 12, size.height() - 12);
    if (!picture(p, scene, area, size.width())) {
        p.setPen(QColor(160, 176, 196));
        p.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, scene.placeholder);
    }
    p.setPen(QPen(QColor(52, 66, 84), 1));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(0, 0, size.width() - 1, size.height() - 1, 6, 6);
    if (scene.showVoice) {
        lights(p, scene.voice, size);
        if (size.height() >= 150)
            voiceText(p, scene.voice, size);
    }
    return target;
}
