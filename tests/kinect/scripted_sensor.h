#pragma once

#include <QByteArray>
#include <QHash>
#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

/// A sensor library whose answers a test decides and which notes every call of it. It is linked in
/// place of the stand-in and takes no time. One at a time; its members are used before the run
/// under test starts and after it ended, and by the run itself.
class ScriptedSensor {
public:
    enum class Answer { Works, Refuses, ThrowsException, ThrowsNumber };

    /// One frame: four bytes a pixel.
    struct Picture {
        QSize size;
        QByteArray bytes;
    };
    /// What one wait for a frame set gives.
    struct Set {
        Picture color;
        Picture infrared;
        Picture depth;
    };

    ScriptedSensor();
    ~ScriptedSensor();
    ScriptedSensor(const ScriptedSensor&) = delete;
    ScriptedSensor& operator=(const ScriptedSensor&) = delete;

    /// The one that lives.
    static ScriptedSensor& current();

    /// Notes the step and answers as the script says; throws where it says so.
    bool step(const QString& name, const QString& details = {});

    /// By the step's name: "context", "enumerate", "open", "start", "wait", "stop", "close", ….
    /// What is not in here works.
    QHash<QString, Answer> answers;
    std::vector<Set> sets;              ///< Given out one by one.
    std::function<void()> atTheLastSet; ///< Called when it is given out, before the wait returns.
    QStringList steps;                  ///< The calls, and whatever the test adds.
};
