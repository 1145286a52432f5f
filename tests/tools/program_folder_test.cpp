#include "common/program_folder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class ProgramFolderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void anInstalledToolWorksInTheDataFolder();
    void aToolOfABuildWorksWhereItIsStarted();
    void aFolderThatIsAskedForComesFirst();

private:
    const QString home = u"/home/somebody"_s;
};

void ProgramFolderTest::init() {
    qunsetenv("LUMENO_HOME");
    qunsetenv("XDG_DATA_HOME");
}

void ProgramFolderTest::anInstalledToolWorksInTheDataFolder() {
    const QTemporaryDir applications;
    QCOMPARE(tool::programFolder(applications.path(), home),
             u"/home/somebody/.local/share/lumeno-control-center"_s);
    qputenv("XDG_DATA_HOME", "/data");
    QCOMPARE(tool::programFolder(applications.path(), home), u"/data/lumeno-control-center"_s);
    qputenv("XDG_DATA_HOME", "");
    QCOMPARE(tool::programFolder(applications.path(), home),
             u"/home/somebody/.local/share/lumeno-control-center"_s);
}

void ProgramFolderTest::aToolOfABuildWorksWhereItIsStarted() {
    const QTemporaryDir applications;
    QVERIFY(QFile(applications.filePath(u"CMakeCache.txt"_s)).open(QIODevice::WriteOnly));
    qputenv("XDG_DATA_HOME", "/data");
    QCOMPARE(tool::programFolder(applications.path(), home), QDir::currentPath());
}

void ProgramFolderTest::aFolderThatIsAskedForComesFirst() {
    const QTemporaryDir applications;
    QVERIFY(QFile(applications.filePath(u"CMakeCache.txt"_s)).open(QIODevice::WriteOnly));
    qputenv("LUMENO_HOME", "/elsewhere");
    QCOMPARE(tool::programFolder(applications.path(), home), u"/elsewhere"_s);
    qputenv("LUMENO_HOME", "");
    QCOMPARE(tool::programFolder(applications.path(), home), QDir::currentPath());
}

QTEST_APPLESS_MAIN(ProgramFolderTest)
#include "program_folder_test.moc"
