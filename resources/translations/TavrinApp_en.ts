<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>Re-establishing the connection...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1 B/s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 KB/s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 MB/s</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+84"/>
        <source>Error of loading of the config.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Change</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ServerItemDelegate</name>
    <message>
        <location filename="../../ui/ServerItemDelegate.cpp" line="+41"/>
        <source>%1 ms</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Latency unknown: not measured yet, or the server did not answer</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
