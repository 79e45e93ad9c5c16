#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

/// The application object of a tool: what it is called, what it is told, and what it prints.
class ToolApplication : public QCoreApplication
{
    Q_OBJECT

public:
    /// `name` is what the tool is called in messages. `argc` has to outlive the object.
    ToolApplication(int &argc, char **argv, const QString &name);

    /// What stands behind the program's name.
    QStringList words() const;

    /// Writes to standard output, and returns the status of a program that has only to say this.
    static int print(const QString &text);

    /// The same with the line that --version is to print.
    static int printVersion();
};
