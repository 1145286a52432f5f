#pragma once

#include "app/command_line.h"

#include <QList>
#include <QString>
#include <utility>

class QFrame;
class QLabel;
class QScrollArea;
class QWidget;

/// Rows of a panel: key text, value text.
using PanelRows = QList<std::pair<QString, QString>>;

// The panels state the fixed policy and configuration at a glance. They are built once and never
// updated, the "current view" row included.
PanelRows roomAwarenessRows(const CommandLine& switches);
PanelRows sensorStatusRows(const CommandLine& switches);
PanelRows safetyRows();

/// A label without a parent that takes no mouse and shows `text` literally, mark-up included. An
/// empty `objectName` leaves it without a name.
QLabel* makeLabel(const QString& text, const QString& objectName);

/// As makeLabel, with its text wrapped where the line is too short for it.
QLabel* makeWrappedLabel(const QString& text, const QString& objectName);

/// A small centered tag; `state` ("pending", "safe" or "warn") chooses its colours.
QLabel* statusPill(const QString& text, const QString& state);

/// A titled frame with one line per row.
QFrame* buildPanel(const QString& title, const PanelRows& rows);

/// The scrollable column of the three panels.
QScrollArea* buildRightPanels(const CommandLine& switches);

/// A frameless, vertically scrolling area around `content` that lets the window's background
/// through.
QScrollArea* scrollAreaAround(QWidget* content);
