#pragma once

#include <QIcon>

/// The program's icon, from the pictures that are built in. They are made from the SVG beside them,
/// since Qt reads SVG only where a plugin is installed.
QIcon programIcon();
