#pragma once

#include "awareness/awareness_pass.h"

#include <QDebug>

/// An overlay as the diagnostic line shows it: its name, its distance and what the voice says.
QString overlayDescription(const FaceOverlay& overlay);

/// A body candidate as the diagnostic line shows it.
QString candidateDescription(const BodyCandidate& candidate);

/// A dropped overlay as the diagnostic line shows it.
QString rejectionDescription(const Rejection& rejection);

/// Writes the diagnostic line of a pass to `line`; `state` is as the pass left it.
void writeAwarenessReport(QDebug line, const AwarenessState& state, const AwarenessResult& result);
