#pragma once

#include "app/command_line.h"
#include "ui/view_specs.h"

#include <QStringList>

class QFrame;
class QHBoxLayout;
class QVBoxLayout;
class QWidget;

/// Whether the page of this view is filled by live streams alone, without pills above them.
bool isStreamPage(View view);

/// The empty frame that holds a page's content, higher for pages of live streams alone.
QFrame* contentFrame(View view);

/// The two status pills above the content of a page that is not of live streams alone.
QHBoxLayout* pillRow(View view, bool demoUi);

/// The demo people of a view's scene: the owner and a second person for Room and Skeletal, the
/// owner for Follow, none for others or without the demo interface.
QStringList demoPeople(View view, bool demoUi);

/// Adds the scene of a page without live streams: demo people or a hint, and the speaker lights.
void addPeopleScene(QVBoxLayout* layout, View view, const CommandLine& switches);

/// The tile of the Combo view that says why there is no skeleton.
QFrame* buildSkeletalTile();

/// The empty widget for the Combo view's grid. It reports no height for its width: that would be
/// the tiles' preferred height, and the page would scroll where shrinking the tiles is enough.
QWidget* comboContainer();

/// A page: heading, description, `content` and the footer line, in a scroll
/// area. It fills the view and scrolls only where the view is lower than the page can be.
QWidget* pageAround(QWidget* content, const ViewSpec& view);
