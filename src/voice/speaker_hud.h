#pragma once

class QWidget;

/// Six speaker lights with one or two lines under them. A fixed visual: no voice reading ever
/// drives it. With `demoLights` the lights show a test pattern (off, active, off, active, unknown,
/// off). The caller puts the widget, which has no parent, into a layout.
QWidget* buildSpeakerHud(bool demoLights);
