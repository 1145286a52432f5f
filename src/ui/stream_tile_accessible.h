#pragma once

/// Makes screen readers find pictures where StreamImageWidget is shown, each described by what it
/// shows at that moment. Calling it again changes nothing.
void installStreamTileAccessibility();
