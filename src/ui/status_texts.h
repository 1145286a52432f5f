#pragma once

#include "app/status_text.h"

#include <QString>

/// The texts of the status line under the views.
namespace statusText {

/// Shown until a view is set or a worker reports.
StatusText atStart(bool mockMode);
/// After a view was set; `buttonText` names the view.
StatusText forView(const QString& buttonText);
/// Progress of the acquisition worker.
StatusText forStream(const QString& status);
/// Failure or warning of the acquisition worker.
StatusText forStreamError(const QString& message);
/// Progress of the face worker.
StatusText forFace(const QString& status);

} // namespace statusText
