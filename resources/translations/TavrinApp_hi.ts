<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="hi">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>खाता</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>लॉग आउट</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>VPN लॉगिन:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>बदलें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>साइट पर नवीनीकरण करें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>साइट पर VPN सदस्यता खरीदें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>साइट पर हम कई भुगतान प्रणालियों से भुगतान स्वीकार करते हैं, जिनमें Bitcoin, PayPal, Yandex Money और अन्य शामिल हैं।</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN सदस्यता समाप्त: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>कनेक्ट है</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>कनेक्शन दिखाएँ</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>कनेक्ट हो रहा है...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>कनेक्शन फिर से स्थापित किया जा रहा है...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>VPN स्थान चुनें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>कनेक्ट नहीं है</translation>
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
        <translation>कॉन्फ़िगरेशन लोड करने में त्रुटि।</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>प्रमाणपत्र लोड करने में त्रुटि।</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>कुंजी लोड करने में त्रुटि।</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>आपके सिस्टम पर समय क्षेत्र बदलना समर्थित नहीं है।</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>आपके सिस्टम पर फ़ायरवॉल समर्थित नहीं है।</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>डेटा न होने के कारण समय क्षेत्र नहीं बदला गया।</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>VPN सदस्यता समाप्त होगी: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>अपडेट फ़ाइल का नाम खाली है।</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>सेटिंग्स</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>खाता</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>सदस्यता नवीनीकृत करें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>सुरक्षित रहने के लिए साइट पर इसे नवीनीकृत करें।</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>सेटिंग्स बदलने के लिए पहले डिस्कनेक्ट करें</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>जब तक आप कनेक्ट नहीं हैं, किल स्विच इंटरनेट को रोके रखता है।</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>बदलें</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Velmora सेवा की पहचान सत्यापित नहीं की जा सकी, इसलिए उसे कुछ भी नहीं भेजा गया।</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>हाँ</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>नहीं</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>ठीक है</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>रद्द करें</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>ब्राउज़र में खोलें</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>कोई वेब ब्राउज़र नहीं खोला जा सका। यह लिंक किसी ब्राउज़र में कॉपी करें:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>जब तक आप कनेक्ट नहीं हैं, किल स्विच इंटरनेट को रोके रखता है, इसलिए यह पेज अभी लोड नहीं हो सकता। पहले कनेक्ट करें या किल स्विच बंद करें, फिर यह लिंक खोलें:</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>पसंदीदा</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>अनुशंसित</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>अपने Velmora खाते में साइन इन करें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>उपयोगकर्ता नाम </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>पासवर्ड</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>लॉग इन</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>साइन इन करने के लिए उपयोगकर्ता नाम और पासवर्ड दर्ज करें।</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>प्रोग्राम का हेल्पर इंस्टॉल नहीं हो सका। कृपया सहायता से संपर्क करें।</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>गलत लॉगिन/पासवर्ड।</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>ऐप्लिकेशन Velmora तक नहीं पहुँच पा रहा है</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>ऐप्लिकेशन नेटवर्क तक नहीं पहुँच पा रहा है।</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>VPN कनेक्शन सक्रिय है। 
डिस्कनेक्ट करके लॉग आउट करें?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>क्या आप लॉग आउट करना चाहते हैं?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>लॉग आउट</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Tavrin अपडेट</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>नया अपडेट उपलब्ध है। डाउनलोड करें?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>अपडेट डाउनलोड करते समय त्रुटि।</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>अपडेट इंस्टॉल करते समय त्रुटि।</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>आपका संस्करण पुराना है। कृपया नया Tavrin ऐप यहाँ से डाउनलोड करें: </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>बाहर निकलें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>VPN कनेक्शन सक्रिय है। डिस्कनेक्ट करके बाहर निकलें?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>VPN लॉगिन बदलें</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>VPN कनेक्शन सक्रिय है। 
डिस्कनेक्ट करके VPN लॉगिन बदलें?</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>अपडेट</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>अपडेट डाउनलोड हो रहा है। कृपया प्रतीक्षा करें...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>रद्द करें</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>स्थान</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>कनेक्ट करने के लिए VPN लॉगिन चुनें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>जारी रखें</translation>
    </message>
</context>
<context>
    <name>ServerItemDelegate</name>
    <message>
        <location filename="../../ui/ServerItemDelegate.cpp" line="+41"/>
        <source>%1 ms</source>
        <translation>%1 मि.से.</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Latency unknown: not measured yet, or the server did not answer</source>
        <translation>विलंबता अज्ञात: अभी मापी नहीं गई, या सर्वर ने उत्तर नहीं दिया</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>स्थान</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>पसंदीदा</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>मानक VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>डबल VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>खोजें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>कोई स्थान नहीं मिला</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>सेटिंग्स</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>भाषा:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>VPN प्रोटोकॉल चुनें:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>स्टार्टअप पर चलाएँ</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>ऐप शुरू होने पर VPN से कनेक्ट करें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>IP पते से समय क्षेत्र बदलें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>VPN सर्वर से कनेक्ट होने के बाद</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>किल स्विच</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>IPv4, IPv6, DNS4, DNS6 लीक से सुरक्षा</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>स्थानीय डिवाइसों तक पहुँच दें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>प्रिंटर, राउटर आदि</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>संस्करण:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>कनेक्शन विवरण</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>खाता</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>लॉग आउट</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>आपके खाते में कोई सक्रिय VPN सदस्यता नहीं है।</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>साइट पर VPN सदस्यता खरीदें</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>साइट पर हम कई भुगतान प्रणालियों से भुगतान स्वीकार करते हैं, जिनमें Bitcoin, PayPal, Yandex Money और अन्य शामिल हैं।</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>कनेक्ट करें</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>फिर से कनेक्ट करें</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>डिस्कनेक्ट करें</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>बाहर निकलें</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>आपका कनेक्शन अभी सुरक्षित नहीं है!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>आपका कनेक्शन अब एन्क्रिप्टेड और सुरक्षित है!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>%1 से कनेक्ट हो रहा है</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>%1 से कनेक्टेड</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>%1 से कनेक्शन फिर से स्थापित किया जा रहा है</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>%1 से कनेक्ट करें</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: किल स्विच ने इंटरनेट रोका है</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (अधिक सुरक्षित)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (अधिक तेज़)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>HTTPS अनुकरण</translation>
    </message>
</context>
</TS>
