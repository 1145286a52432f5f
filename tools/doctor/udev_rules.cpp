#include "doctor/udev_rules.h"

#include "doctor/places.h"

#include <QDir>
#include <QMap>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace doctor {

namespace {

/// In the order in which they count.
const QStringList rulesFolders{u"/etc/udev/rules.d"_s, u"/run/udev/rules.d"_s,
                               u"/usr/local/lib/udev/rules.d"_s, u"/usr/lib/udev/rules.d"_s,
                               u"/lib/udev/rules.d"_s};

/// The file of systemd that acts on the tag "uaccess".
const QString actingFile = u"73-seat-late.rules"_s;

/// What a file says about the product.
struct Grant {
    bool byTag = false;  ///< whoever sits at the machine
    bool byMode = false; ///< everybody, or a group
};

Grant grantIn(const QString& path, const QString& product) {
    Grant grant;
    QString text = QString::fromUtf8(contentOf(path));
    text.replace(u"\\\n"_s, u" "_s); // a rule may go on in the next line
    for (const QString& line : text.split(u'\n')) {
        if (line.trimmed().startsWith(u'#') || !line.contains(u"\"045e\""_s, Qt::CaseInsensitive) ||
            !line.contains(u"\"%1\""_s.arg(product), Qt::CaseInsensitive))
            continue;
        grant.byTag |= line.contains(u"\"uaccess\""_s);
        grant.byMode |= line.contains(u"MODE"_s) || line.contains(u"GROUP"_s);
    }
    return grant;
}

} // namespace

SensorRule findSensorRule(const QString& root, const QString& product) {
    QMap<QString, QString> files; // by name, so in udev's order
    for (const QString& folder : rulesFolders)
        for (const QString& name :
             QDir(root + folder).entryList({u"*.rules"_s}, QDir::Files | QDir::System))
            if (!files.contains(name))
                files.insert(name, folder + u'/' + name);
    SensorRule found;
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        const Grant grant = grantIn(root + file.value(), product);
        if (grant.byMode || (grant.byTag && file.key() < actingFile))
            return {SensorRule::Works, file.value()};
        if (grant.byTag && found.state == SensorRule::Missing)
            found = {SensorRule::TooLate, file.value()};
    }
    return found;
}

} // namespace doctor
