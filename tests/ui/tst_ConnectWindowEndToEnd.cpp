// The connect page against the real helper daemon and a real OpenVPN server, in the two network
// namespaces of the helper's end-to-end lab. The machine's own namespace is never changed.
#include <QtTest>

#include "ConnectTestHost.h"
#include "ConnectWindow.h"
#include "LocalSettings.h"
#include "e2e/E2eLab.h"

#include <QPushButton>

class TestConnectWindowEndToEnd : public QObject
{
    Q_OBJECT

private:
    E2eLab m_lab;

private slots:
    void initTestCase()
    {
        const QString missing = E2eLab::missingPrerequisite();
        if (!missing.isEmpty())
            QSKIP(qPrintable(QStringLiteral("end-to-end test skipped: ") + missing));
        QVERIFY2(m_lab.start(), qPrintable(m_lab.error()));
    }

    void cleanupTestCase() { m_lab.stop(); }

    void connectsOverUdpAndDisconnects()
    {
        LocalSettings::instance()->createDefaultSettings();
        LocalSettings::instance()->setValue(Keys::OvpnProtocol, QStringLiteral("udp"));
        ConnectTestHost host;
        host.config = m_lab.clientTemplate();
        host.cert = m_lab.clientCert();
        host.key = m_lab.clientKey();

        ServerInfo server;
        server.name = QStringLiteral("Lab");
        server.flag = QStringLiteral("de");
        server.ip = QLatin1String(E2eLab::ServerAddress);
        server.user = QLatin1String(E2eLab::User);
        server.password = QLatin1String(E2eLab::Password);
        server.udpPorts = QStringList {QStringLiteral("1194")};
        server.type = ServerInfo::Standart;
        server.protocol = OpenVpnUdp;

        ConnectWindow page(&host);
        QList<int> states;
        connect(&page, &ConnectWindow::stateChanged, this, [&states](int state) { states << state; });
        page.setServers({server});
        page.onServerChanged(ServerIdentif(server.user, server.name));

        QTest::mouseClick(page.findChild<QPushButton*>("btnConnect"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(page.state(), int(ConnectWindow::Connected), 30000);
        QCOMPARE(host.trayText(), QStringLiteral("Connected to Lab"));

        // Traffic through the tunnel raises the totals the page shows its rates from.
        QTRY_VERIFY_WITH_TIMEOUT(page.receivedTotal() > 0, 5000);
        const double received = page.receivedTotal();
        const double sent = page.sentTotal();
        QCOMPARE(QProcess::execute(QStringLiteral("ping"),
                                   {QStringLiteral("-c"),
                                    QStringLiteral("3"),
                                    QStringLiteral("-i"),
                                    QStringLiteral("0.2"),
                                    QStringLiteral("-W"),
                                    QStringLiteral("2"),
                                    QLatin1String(E2eLab::UdpTunnelServer)}),
                 0);
        QTRY_VERIFY_WITH_TIMEOUT(page.receivedTotal() > received && page.sentTotal() > sent, 5000);

        page.onClickConnect();
        QTRY_VERIFY_WITH_TIMEOUT(states.contains(ConnectWindow::Ending), 15000);
        QTRY_COMPARE(page.state(), int(ConnectWindow::Idle));
        QCOMPARE(host.trayText(), QStringLiteral("Connect Lab"));
        QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("openvpn"), 0, 10000);
        if (QTest::currentTestFailed())
            qInfo().noquote() << "daemon log:\n" << m_lab.daemonLog().right(4000);
    }
};

int main(int argc, char** argv)
{
    QTemporaryDir root;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(root.path()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(root.path()));
    qputenv("TAVRIN_API_URL", "https://127.0.0.1:1");
    QApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("QOLV"));
    app.setApplicationName(QStringLiteral("Tavrin"));
    TestConnectWindowEndToEnd test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ConnectWindowEndToEnd.moc"
