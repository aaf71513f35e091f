#include "ManagementScript.h"

#include <QFile>

ManagementScript ManagementScript::parse(const QByteArray& text, QString* error)
{
    ManagementScript script;
    int number = 0;
    for (QByteArray line : text.split('\n')) {
        ++number;
        if (line.endsWith('\r'))
            line.chop(1);
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        if (line.startsWith("S: ")) {
            script.send(line.mid(3));
        } else if (line.startsWith("C: ")) {
            script.expect(line.mid(3));
        } else if (line.startsWith("pause ")) {
            script.add(Step::Pause, {}, line.mid(6).toInt());
        } else if (line == "close") {
            script.close();
        } else {
            if (error)
                *error = QStringLiteral("line %1: unknown step \"%2\"").arg(number).arg(QString::fromUtf8(line));
            return {};
        }
    }
    return script;
}

ManagementScript ManagementScript::fromFile(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot read %1").arg(path);
        return {};
    }
    return parse(file.readAll(), error);
}
