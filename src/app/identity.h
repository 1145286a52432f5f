#pragma once

#include <QColor>
#include <QString>

/// Who an overlay stands for travels only as its label; labels are compared exactly. The colours
/// that go with the owner and with bodies are kept beside them.
namespace identity {

inline const QString owner = QStringLiteral("Tavin");
inline const QString possibleOwner = QStringLiteral("Possible Tavin");
inline const QString person = QStringLiteral("Person");
inline const QString unknown = QStringLiteral("Unknown");

inline constexpr QColor ownerColor{91, 232, 134};
inline constexpr QColor bodyColor{80, 170, 255};

} // namespace identity
