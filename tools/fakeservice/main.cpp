#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include "FakeService.h"

// The fake Velmora service as a program, for running the client against it by hand or in the local demo.
int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("tavrin-fakeservice"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A fake Velmora service over HTTPS on 127.0.0.1, with a certificate from a throw-away "
                       "authority."));
    parser.addHelpOption();
    const QCommandLineOption portOption({QStringLiteral("p"), QStringLiteral("port")},
                                        QStringLiteral("Port to listen on (default 8443)."),
                                        QStringLiteral("port"),
                                        QStringLiteral("8443"));
    const QCommandLineOption fixtureOption({QStringLiteral("f"), QStringLiteral("fixture")},
                                           QStringLiteral("JSON fixture to answer from (default: the built-in demo)."),
                                           QStringLiteral("file"));
    const QCommandLineOption dumpOption(QStringLiteral("print-demo-fixture"),
                                        QStringLiteral("Print the built-in demo fixture as JSON and exit."));
    const QCommandLineOption plainOption(
        QStringLiteral("plain-http"),
        QStringLiteral("Serve plain HTTP instead of HTTPS, to stand in for the connectivity probe's site."));
    const QCommandLineOption caOption(QStringLiteral("ca-file"),
                                      QStringLiteral("Write the authority that signed the service's certificate to "
                                                     "this PEM file, for the client's TAVRIN_CA_FILE."),
                                      QStringLiteral("file"));
    parser.addOption(portOption);
    parser.addOption(caOption);
    parser.addOption(plainOption);
    parser.addOption(fixtureOption);
    parser.addOption(dumpOption);
    parser.process(app);

    QTextStream err(stderr);
    if (parser.isSet(dumpOption)) {
        QTextStream(stdout) << FakeFixture::demo().toJson();
        return 0;
    }
    FakeFixture fixture = FakeFixture::demo();
    if (parser.isSet(fixtureOption)) {
        QFile file(parser.value(fixtureOption));
        QString error;
        if (!file.open(QIODevice::ReadOnly)) {
            err << "cannot read " << file.fileName() << ": " << file.errorString() << '\n';
            return 1;
        }
        if (!FakeFixture::fromJson(file.readAll(), &fixture, &error)) {
            err << file.fileName() << ": " << error << '\n';
            return 1;
        }
    }
    bool portOk = false;
    const uint port = parser.value(portOption).toUInt(&portOk);
    if (!portOk || port > 65535) {
        err << "bad port: " << parser.value(portOption) << '\n';
        return 1;
    }
    FakeService service;
    service.setFixture(fixture);
    service.setPlainHttp(parser.isSet(plainOption));
    QString error;
    if (!service.start(quint16(port), &error)) {
        err << "cannot start: " << error << '\n';
        return 1;
    }
    if (parser.isSet(caOption)) {
        QFile authority(FakeService::caFile());
        QFile out(parser.value(caOption));
        if (!authority.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly)
            || out.write(authority.readAll()) < 0 || !out.flush()) {
            err << "cannot write the authority to " << out.fileName() << ": " << out.errorString() << '\n';
            return 1;
        }
    }
    QTextStream(stdout) << "Fake Velmora service on " << service.baseUrl() << " (account " << fixture.login << ")"
                        << Qt::endl;
    return app.exec();
}
