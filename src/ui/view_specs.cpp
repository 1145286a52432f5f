#include "ui/view_specs.h"

using namespace Qt::StringLiterals;

QList<ViewSpec> viewSpecs() {
    return {
        {u"rgb"_s, u"RGB"_s, u"CURRENT VIEW: RGB"_s, u"Live Kinect RGB stream."_s, View::Rgb},
        {u"ir"_s, u"IR"_s, u"CURRENT VIEW: IR"_s,
         u"Live Kinect infrared stream, normalized for visibility."_s, View::Ir},
        {u"depth"_s, u"Depth"_s, u"CURRENT VIEW: DEPTH"_s,
         u"Live Kinect depth map, colorized for visibility."_s, View::Depth},
        {u"skeletal"_s, u"Skeletal"_s, u"CURRENT VIEW: SKELETAL"_s,
         u"Skeleton tracking is unavailable in Gate 4. Face/depth awareness remains active."_s,
         View::Skeletal},
        {u"combo"_s, u"Combo"_s, u"CURRENT VIEW: COMBO"_s,
         u"Live RGB with IR/depth previews, face overlay, distance, and read-only Auralis "
         "status."_s,
         View::Combo},
        {u"room"_s, u"Room"_s, u"CURRENT VIEW: ROOM OVERVIEW"_s,
         u"Wide RGB room view with accepted face/body tracks."_s, View::Room},
        {u"follow"_s, u"Follow"_s, u"CURRENT VIEW: FOLLOW"_s,
         u"Software follow view crops toward the best accepted face/body target."_s, View::Follow},
    };
}

std::optional<View> viewNamed(const QString& key) {
    for (const ViewSpec& spec : viewSpecs()) {
        if (spec.key == key)
            return spec.view;
    }
    return std::nullopt;
}

std::optional<View> viewForKeyboardKey(int keyboardKey) {
    const int index = keyboardKey - Qt::Key_1;
    return index >= 0 && index < viewSpecs().size() ? std::optional(View(index)) : std::nullopt;
}
