#pragma once

#include "awareness/body_tracks.h"

/// Appends an overlay for every stable track, "Possible Tavin" for the owner's body and "Person"
/// for the others, unless an owner's face of the list already covers the body.
void appendBodyOverlays(QList<FaceOverlay>& overlays, const QList<BodyTrack>& bodyTracks,
                        qint64 now);

/// Drops the body overlays of an earlier pass and clears every speaker note, so that what remains
/// is what the face worker sent.
void keepFacesOnly(QList<FaceOverlay>& overlays);
