<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Abmelden</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>VPN-Login:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>Ändern</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>Auf der Website verlängern</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>VPN-Abo auf der Website kaufen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Auf der Website akzeptieren wir Zahlungen über verschiedene Zahlungssysteme, darunter Bitcoin, PayPal, Yandex Money und andere.</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN-Abo läuft ab am: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>Verbunden</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>Verbindung anzeigen</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>Verbinde...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>Verbindung wird wiederhergestellt...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>VPN-Standort wählen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>Nicht verbunden</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1 B/s</source>
        <translation>%1 B/s</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 KB/s</source>
        <translation>%1 KB/s</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 MB/s</source>
        <translation>%1 MB/s</translation>
    </message>
    <message>
        <location line="+84"/>
        <source>Error of loading of the config.</source>
        <translation>Fehler beim Laden der Konfiguration.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>Fehler beim Laden des Zertifikats.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>Fehler beim Laden des Schlüssels.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>Das Ändern der Zeitzone wird auf Ihrem System nicht unterstützt.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>Die Firewall wird auf Ihrem System nicht unterstützt.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>Die Zeitzone wurde mangels Daten nicht geändert.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN-Abo läuft ab am: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>Der Name der Update-Datei ist leer.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>Abo verlängern</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>Verlängern Sie es auf der Website, um geschützt zu bleiben.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>Trennen Sie zuerst die Verbindung, um die Einstellungen zu ändern</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>Der Kill Switch sperrt das Internet, solange Sie nicht verbunden sind.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Ändern</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Die Identität des Velmora-Dienstes konnte nicht überprüft werden, daher wurde nichts an ihn gesendet.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>Nein</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>In einem Browser öffnen</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>Es konnte kein Webbrowser geöffnet werden. Kopieren Sie diesen Link in einen Browser:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>Der Kill Switch sperrt das Internet, solange Sie nicht verbunden sind, daher kann diese Seite jetzt nicht geladen werden. Verbinden Sie sich zuerst oder schalten Sie den Kill Switch aus und öffnen Sie dann diesen Link:</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>Favoriten</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>Empfohlen</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>Melden Sie sich bei Ihrem Velmora-Konto an</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>Benutzername </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>Anmelden</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>Zum Anmelden müssen Sie Benutzername und Passwort eingeben.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>Der Hilfsdienst des Programms konnte nicht installiert werden. Bitte wenden Sie sich an den Support.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>Falscher Login oder falsches Passwort.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>Die Anwendung hat keinen Zugang zu Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>Die Anwendung hat keinen Netzwerkzugang.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>Die VPN-Verbindung ist aktiv. 
Trennen und abmelden?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>Möchten Sie sich abmelden?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>Abmelden</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Tavrin-Update</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>Ein neues Update ist verfügbar. Herunterladen?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>Fehler beim Herunterladen des Updates.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>Fehler beim Installieren des Updates.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>Ihre Version ist veraltet. Bitte laden Sie die neue Tavrin-App herunter auf </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>Die VPN-Verbindung ist aktiv. Trennen und beenden?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>VPN-Login wechseln</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>Die VPN-Verbindung ist aktiv. 
Trennen und den VPN-Login wechseln?</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>Aktualisierung</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>Update wird heruntergeladen. Bitte warten...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>Standort</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>VPN-Login zum Verbinden wählen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
</context>
<context>
    <name>ServerItemDelegate</name>
    <message>
        <location filename="../../ui/ServerItemDelegate.cpp" line="+41"/>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Latency unknown: not measured yet, or the server did not answer</source>
        <translation>Latenz unbekannt: noch nicht gemessen, oder der Server hat nicht geantwortet</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>Standorte</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>Favoriten</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>Standard-VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>Doppel-VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>Keine Standorte gefunden</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>Sprache:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>VPN-Protokoll wählen:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>Beim Systemstart ausführen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>Beim Start mit VPN verbinden</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>Zeitzone per IP-Adresse ändern</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>Nach der Verbindung mit dem VPN-Server</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>Kill Switch</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>Schutz vor IPv4-, IPv6-, DNS4- und DNS6-Lecks</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>Zugriff auf lokale Geräte</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>Drucker, Router usw.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>Version:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>Verbindungsdetails</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>Konto</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Abmelden</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>Ihr Konto hat kein aktives VPN-Abo.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>VPN-Abo auf der Website kaufen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Auf der Website akzeptieren wir Zahlungen über verschiedene Zahlungssysteme, darunter Bitcoin, PayPal, Yandex Money und andere.</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>Neu verbinden</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>Trennen</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>Ihre Verbindung ist jetzt nicht geschützt!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>Ihre Verbindung ist jetzt verschlüsselt und geschützt!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>Verbindung zu %1 wird hergestellt</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>Verbunden mit %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>Verbindung zu %1 wird wiederhergestellt</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>Mit %1 verbinden</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: Internet durch den Kill Switch gesperrt</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (sicherer)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (schneller)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>HTTPS-Imitation</translation>
    </message>
</context>
</TS>
