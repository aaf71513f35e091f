#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include "LocalSettings.h"
#include "PageTestEnvironment.h"
#include "SettingsWindow.h"

using Protocols = QList<PROTOCOL_TYPE>;
Q_DECLARE_METATYPE(Protocols)

namespace {

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestSettingsWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        LocalSettings::instance()->createDefaultSettings();
        LocalSettings::instance()->setValue(Keys::Language, QStringLiteral("en"));
        QFile::remove(SettingsWindow::autostartPath());
        m_page.reset(new SettingsWindow);
    }
    void cleanup() { m_page.reset(); }

    void languagesInTheirOrder()
    {
        QStringList codes;
        for (int i = 0; i < m_page->languageBox()->count(); ++i)
            codes.append(m_page->languageBox()->itemData(i).toString());
        QCOMPARE(
            codes,
            QStringList(
                {"ar", "de", "en", "es", "fr", "hi", "it", "ja", "ko", "pl", "pt", "ru", "tr", "uk", "vi", "zh_CN"}));
        QCOMPARE(m_page->languageBox()->itemText(4), QStringLiteral("Français"));
    }

    void storedLanguage_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("selected");
        QTest::newRow("known code") << "de"
                                    << "de";
        QTest::newRow("the first entry is installed too") << "ar"
                                                          << "ar";
        QTest::newRow("code with a region") << "zh_CN"
                                            << "zh_CN";
        QTest::newRow("unknown code gives English") << "xx"
                                                    << "en";
        QTest::newRow("codes are case-sensitive") << "DE"
                                                  << "en";
        QTest::newRow("empty code gives English") << ""
                                                  << "en";
    }
    void storedLanguage()
    {
        QFETCH(QString, stored);
        QFETCH(QString, selected);
        LocalSettings::instance()->setValue(Keys::Language, stored);
        m_page->loadSettings({OpenVpnTcp});
        QCOMPARE(m_page->languageBox()->currentData().toString(), selected);
        // The protocol label follows the installed translation.
        QCOMPARE(m_page->protocolBox()->itemText(0), QCoreApplication::translate("VpnProtocol", "OpenVPN TCP (safer)"));
        if (selected != QLatin1String("en"))
            QVERIFY(m_page->protocolBox()->itemText(0) != QLatin1String("OpenVPN TCP (safer)"));
        m_page->saveSettings();
        QCOMPARE(LocalSettings::instance()->value(Keys::Language).toString(), selected);
    }

    void protocolChoice_data()
    {
        QTest::addColumn<Protocols>("offered");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QStringList>("items");
        QTest::addColumn<QString>("saved");
        QTest::newRow("items follow the table's order")
            << Protocols {Stealth, OpenVpnUdp, OpenVpnTcp} << "udp" << QStringList {"tcp", "udp", "stealth"} << "udp";
        QTest::newRow("an unoffered protocol gives the first offered")
            << Protocols {OpenVpnUdp, Stealth} << "tcp" << QStringList {"udp", "stealth"} << "udp";
        QTest::newRow("empty list saves an empty protocol") << Protocols {} << "tcp" << QStringList {} << "";
        QTest::newRow("unknown ids are ignored")
            << Protocols {PPTP, Stealth} << "stealth" << QStringList {"stealth"} << "stealth";
    }
    void protocolChoice()
    {
        QFETCH(Protocols, offered);
        QFETCH(QString, stored);
        QFETCH(QStringList, items);
        QFETCH(QString, saved);
        LocalSettings::instance()->setValue(Keys::OvpnProtocol, stored);
        m_page->loadSettings(offered);
        QStringList shown;
        for (int i = 0; i < m_page->protocolBox()->count(); ++i)
            shown.append(m_page->protocolBox()->itemData(i).toString());
        QCOMPARE(shown, items);
        QSignalSpy back(m_page.data(), &SettingsWindow::back);
        QTest::mouseClick(m_page->backButton(), Qt::LeftButton);
        QCOMPARE(back.count(), 1);
        QCOMPARE(LocalSettings::instance()->value(Keys::OvpnProtocol).toString(), saved);
    }

    void optionsLoadAndSave_data()
    {
        QTest::addColumn<bool>("on");
        QTest::newRow("all ticked") << true;
        QTest::newRow("all clear") << false;
    }
    void optionsLoadAndSave()
    {
        QFETCH(bool, on);
        const QStringList keys {Keys::LaunchOnStart,
                                Keys::ConnectOnStart,
                                Keys::KillConnect,
                                Keys::AllowLocalDevices,
                                Keys::ChangeTimezone};
        for (const QString& key : keys)
            LocalSettings::instance()->setValue(key, on);
        LocalSettings::instance()->setValue(Keys::IPv6LeakProtect, false);
        m_page->loadSettings({OpenVpnTcp});
        for (QCheckBox* box : {m_page->launchOnStart(),
                               m_page->autoconnectOnStart(),
                               m_page->killSwitch(),
                               m_page->allowLocalDevices(),
                               m_page->changeTimezone()})
            QCOMPARE(box->isChecked(), on);
        for (const QString& key : keys)
            LocalSettings::instance()->setValue(key, !on);
        m_page->saveSettings();
        for (const QString& key : keys)
            QCOMPARE(LocalSettings::instance()->value(key).toBool(), on);
        // There is no box for it: saving always turns leak protection on.
        QCOMPARE(LocalSettings::instance()->value(Keys::IPv6LeakProtect).toBool(), true);
    }

    void localDevicesFollowKillSwitch_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("killSwitch");
        QTest::addColumn<bool>("killVisible");
        QTest::addColumn<bool>("localVisible");
        QTest::newRow("full, kill switch on") << int(SettingsWindow::Full) << true << true << true;
        QTest::newRow("full, kill switch off") << int(SettingsWindow::Full) << false << true << false;
        QTest::newRow("lite hides both") << int(SettingsWindow::Lite) << true << false << false;
    }
    void localDevicesFollowKillSwitch()
    {
        QFETCH(int, mode);
        QFETCH(bool, killSwitch);
        QFETCH(bool, killVisible);
        QFETCH(bool, localVisible);
        LocalSettings::instance()->setValue(Keys::KillConnect, killSwitch);
        m_page->loadSettings({OpenVpnTcp});
        m_page->showWithMode(SettingsWindow::Mode(mode));
        QVERIFY(QTest::qWaitForWindowExposed(m_page.data()));
        QCOMPARE(m_page->killSwitch()->isVisible(), killVisible);
        QCOMPARE(m_page->allowLocalDevices()->isVisible(), localVisible);
        if (mode == SettingsWindow::Full) {
            QTest::mouseClick(
                m_page->killSwitch(), Qt::LeftButton, Qt::NoModifier, QPoint(8, m_page->killSwitch()->height() / 2));
            QCOMPARE(m_page->allowLocalDevices()->isVisible(), !localVisible);
        }
    }

    void autostartEntry()
    {
        const QString path = SettingsWindow::autostartPath();
        QVERIFY(path.startsWith(qEnvironmentVariable("HOME")));
        QVERIFY(path.endsWith(QStringLiteral("/.config/autostart/tavirn.desktop")));
        m_page->loadSettings({OpenVpnTcp});

        m_page->launchOnStart()->setChecked(true);
        m_page->saveSettings();
        const QByteArray expected("[Desktop Entry]\nType=Application\nExec='/usr/bin/tavrin' -h\nName=Tavrin");
        QCOMPARE(readFile(path), expected);

        // A stale entry is replaced, not appended to.
        QFile stale(path);
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.write(QByteArray(500, 'x'));
        stale.close();
        m_page->saveSettings();
        QCOMPARE(readFile(path), expected);

        m_page->launchOnStart()->setChecked(false);
        m_page->saveSettings();
        QVERIFY(!QFile::exists(path));
        // Nothing to remove is no failure.
        m_page->saveSettings();
        QVERIFY(!QFile::exists(path));
    }

    void optionsReportChanges()
    {
        m_page->loadSettings({OpenVpnTcp, OpenVpnUdp});
        QSignalSpy changed(m_page.data(), &SettingsWindow::changed);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.data()));
        QTest::mouseClick(m_page->changeTimezone(),
                          Qt::LeftButton,
                          Qt::NoModifier,
                          QPoint(8, m_page->changeTimezone()->height() / 2));
        QCOMPARE(changed.count(), 1);
        m_page->protocolBox()->setCurrentIndex(1);
        QCOMPARE(changed.count(), 2);
    }

    void disablingThePage()
    {
        m_page->setEnabledPage(false);
        QVERIFY(!m_page->launchOnStart()->isEnabled());
        QVERIFY(!m_page->autoconnectOnStart()->isEnabled());
        QVERIFY(!m_page->changeTimezone()->isEnabled());
        QVERIFY(!m_page->allowLocalDevices()->isEnabled());
        QVERIFY(m_page->killSwitch()->isEnabled());
        m_page->setEnabledPage(true);
        QVERIFY(m_page->launchOnStart()->isEnabled());
    }

private:
    QScopedPointer<SettingsWindow> m_page;
};

TAVRIN_PAGE_TEST_MAIN(TestSettingsWindow)
#include "tst_SettingsWindow.moc"
