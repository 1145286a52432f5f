#include "ui/view_specs.h"

using namespace Qt::StringLiterals;

QList<ViewSpec> viewSpecs() {
    return {
        {u"rgb"_s, u"RGB"_s, u"CURRENT VIEW: RGB"_s, u"Live Kinect RGB stream."_s},
        {u"ir"_s, u"IR"_s, u"CURRENT VIEW: IR"_s,
         u"Live Kinect infrared stream, normalized for visibility."_s},
        {u"depth"_s, u"Depth"_s, u"CURRENT VIEW: DEPTH"_s,
         u"Live Kinect depth map, colorized for visibility."_s},
        {u"skeletal"_s, u"Skeletal"_s, u"CURRENT VIEW: SKELETAL"_s,
         u"Skeleton tracking is unavailable in Gate 4. Face/depth awareness remains active."_s},
        {u"combo"_s, u"Combo"_s, u"CURRENT VIEW: COMBO"_s,
         u"Live RGB with IR/depth previews, face overlay, distance, and read-only Auralis "
         "status."_s},
        {u"room"_s, u"Room"_s, u"CURRENT VIEW: ROOM OVERVIEW"_s,
         u"Wide RGB room view with accepted face/body tracks."_s},
        {u"follow"_s, u"Follow"_s, u"CURRENT VIEW: FOLLOW"_s,
         u"Software follow view crops toward the best accepted face/body target."_s},
    };
}

int viewIndex(const QList<ViewSpec>& views, const QString& key) {
    for (int i = 0; i < int(views.size()); ++i) {
        if (views.at(i).key == key)
            return i;
    }
    return -1;
}

QString viewKeyFor(const QList<ViewSpec>& views, int keyboardKey) {
    const int index = keyboardKey - Qt::Key_1;
    return index >= 0 && index < views.size() ? views.at(index).key : QString();
}

QString streamPlaceholder(const QString& tileKey) {
    if (tileKey.endsWith(u"depth"_s))
        return u"Waiting for depth stream"_s;
    return tileKey.endsWith(u"ir"_s) ? u"Waiting for IR stream"_s : u"Waiting for RGB stream"_s;
}
