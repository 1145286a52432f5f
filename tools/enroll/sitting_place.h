#pragma once

#include <QString>
#include <variant>

namespace tool {
class CommandLine;
class Console;
} // namespace tool

namespace enroll {

/// Where the Control Center reads its samples: the folder of its options, below the folder that it
/// is started in. Needs an application object.
QString samplesFolder();

/// Where a sitting's samples go.
struct SittingPlace {
    QString folder;  ///< Of all samples.
    QString sitting; ///< A name for which isSittingName() is true.
};

/// The options --sitting and --into.
void addSittingOptions(tool::CommandLine& line);

/// What they say: another folder than samplesFolder(), another name than the date and time. The
/// exit status instead, after a complaint, when the name is wrong or nothing can be written there.
std::variant<SittingPlace, int> sittingPlace(tool::CommandLine& line, tool::Console& console);

} // namespace enroll
