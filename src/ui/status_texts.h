#pragma once

#include <QString>

/// The texts of the status line under the views. Texts of others are joined to ours, never used as
/// templates, so that a per cent sign in a device's message stays what it is.
namespace statusText {

/// Shown until a view is set or a worker reports.
QString atStart(bool mockMode);
/// After a view was set; `buttonText` names the view.
QString forView(const QString& buttonText);
/// Progress of the acquisition worker.
QString forStream(const QString& status);
/// Failure or warning of the acquisition worker.
QString forStreamError(const QString& message);
/// Progress of the face worker.
QString forFace(const QString& status);

} // namespace statusText
