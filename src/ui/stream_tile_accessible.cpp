#include "ui/stream_tile_accessible.h"

#include "ui/stream_image_widget.h"

#include <QAccessibleWidget>

namespace {

/// Asked for when somebody listens, so that a frame costs nothing for those who do not.
class StreamTileAccessible : public QAccessibleWidget {
public:
    explicit StreamTileAccessible(StreamImageWidget* tile)
        : QAccessibleWidget(tile, QAccessible::Graphic) {}

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Description)
            return static_cast<const StreamImageWidget*>(widget())->description();
        return QAccessibleWidget::text(kind);
    }
};

QAccessibleInterface* streamTileInterface(const QString&, QObject* object) {
    auto* tile = qobject_cast<StreamImageWidget*>(object);
    return tile ? new StreamTileAccessible(tile) : nullptr;
}

} // namespace

void installStreamTileAccessibility() {
    QAccessible::installFactory(streamTileInterface); // which ignores what it has already
}
