#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include "LocalSettings.h"
#include "SettingsWindow.h"
#include "TestEnvironment.h"

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

    // Only the offered protocols are listed; a stored one not offered gives way to the first offered.
    void protocolChoice()
    {
        LocalSettings::instance()->setValue(Keys::OvpnProtocol, QStringLiteral("tcp"));
        m_page->loadSettings({OpenVpnUdp, Stealth});
        QCOMPARE(m_page->protocolBox()->count(), 2);
        QCOMPARE(m_page->protocolBox()->itemData(0).toString(), QStringLiteral("udp"));
        QCOMPARE(m_page->protocolBox()->itemData(1).toString(), QStringLiteral("stealth"));
        // Leaving the page saves it.
        QTest::mouseClick(m_page->backButton(), Qt::LeftButton);
        QCOMPARE(LocalSettings::instance()->value(Keys::OvpnProtocol).toString(), QStringLiteral("udp"));
    }

    void optionsLoadAndSave()
    {
        const QVector<QPair<QString, QCheckBox*>> options {{Keys::LaunchOnStart, m_page->launchOnStart()},
                                                           {Keys::ConnectOnStart, m_page->autoconnectOnStart()},
                                                           {Keys::KillConnect, m_page->killSwitch()},
                                                           {Keys::AllowLocalDevices, m_page->allowLocalDevices()},
                                                           {Keys::ChangeTimezone, m_page->changeTimezone()}};
        for (const auto& option : options)
            LocalSettings::instance()->setValue(option.first, true);
        LocalSettings::instance()->setValue(Keys::IPv6LeakProtect, false);
        m_page->loadSettings({OpenVpnTcp});
        for (const auto& option : options) {
            QVERIFY(option.second->isChecked());
            LocalSettings::instance()->setValue(option.first, false);
        }
        m_page->saveSettings();
        for (const auto& option : options)
            QCOMPARE(LocalSettings::instance()->value(option.first).toBool(), true);
        // There is no box for it: saving always turns leak protection on.
        QCOMPARE(LocalSettings::instance()->value(Keys::IPv6LeakProtect).toBool(), true);
    }

    void localDevicesFollowKillSwitch()
    {
        LocalSettings::instance()->setValue(Keys::KillConnect, true);
        m_page->loadSettings({OpenVpnTcp});
        m_page->showWithMode(SettingsWindow::Full);
        QVERIFY(QTest::qWaitForWindowExposed(m_page.data()));
        QVERIFY(m_page->allowLocalDevices()->isVisible());
        QTest::mouseClick(
            m_page->killSwitch(), Qt::LeftButton, Qt::NoModifier, QPoint(8, m_page->killSwitch()->height() / 2));
        QVERIFY(!m_page->allowLocalDevices()->isVisible());
    }

    void autostartEntry()
    {
        const QString path = SettingsWindow::autostartPath();
        QVERIFY(path.startsWith(qEnvironmentVariable("HOME")));
        m_page->loadSettings({OpenVpnTcp});

        m_page->launchOnStart()->setChecked(true);
        m_page->saveSettings();
        const QByteArray expected("[Desktop Entry]\nType=Application\nExec='/usr/bin/tavrin' -h\nName=Tavrin");
        QCOMPARE(readFile(path), expected);

        // A stale entry is replaced, not appended to.
        QVERIFY(writeFile(path, QByteArray(500, 'x')));
        m_page->saveSettings();
        QCOMPARE(readFile(path), expected);

        m_page->launchOnStart()->setChecked(false);
        m_page->saveSettings();
        QVERIFY(!QFile::exists(path));
    }

    // Each language as its speakers write it, per the locale data, maybe with the country ("español de España").
    void languageNames()
    {
        for (int i = 0; i < m_page->languageBox()->count(); ++i) {
            const QString name = m_page->languageBox()->itemText(i).toLower() + QLatin1Char(' ');
            const QLocale locale(m_page->languageBox()->itemData(i).toString());
            const QString native
                = locale.language() == QLocale::English ? QStringLiteral("English") : locale.nativeLanguageName();
            QVERIFY2((native.toLower() + QLatin1Char(' ')).startsWith(name), qPrintable(name));
        }
    }

    // "Version:" sits by the number, without the indent of the option notes.
    void versionTitle()
    {
        auto* title = m_page->findChild<QLabel*>(QStringLiteral("lbVersionTitle"));
        title->ensurePolished();
        QVERIFY(title->sizeHint().width() - title->fontMetrics().horizontalAdvance(title->text()) <= 2);
    }

private:
    QScopedPointer<SettingsWindow> m_page;
};

TAVRIN_PAGE_TEST_MAIN(TestSettingsWindow)
#include "tst_SettingsWindow.moc"
