#pragma once

#include <filesystem>

namespace virtual_kinect {

/// Writes sample images of the built-in room's owner into `folder`, which is created when missing,
/// as "owner-00.png" and so on: 160 x 160 grey pictures of the face as the detector frames it at
/// several distances and moments, with the histogram equalised, because that is what the
/// recogniser is later asked to compare them with. The same files at every run. Returns how many
/// were written; throws std::exception with the reason when that cannot be done.
int writeOwnerSamples(const std::filesystem::path& folder);

} // namespace virtual_kinect
