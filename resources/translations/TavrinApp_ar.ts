<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>الحساب</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>تسجيل الخروج</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>حساب VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>تغيير</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>التجديد على الموقع</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>شراء اشتراك VPN على الموقع</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>نقبل على الموقع الدفع عبر أنظمة دفع مختلفة، منها Bitcoin وPayPal وYandex Money وغيرها.</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>ينتهي اشتراك VPN في: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>متصل</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>عرض الاتصال</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>جارٍ الاتصال...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>جارٍ إعادة إنشاء الاتصال...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>اختر موقع VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>غير متصل</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1 B/s</source>
        <translation>%1 بايت/ث</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 KB/s</source>
        <translation>%1 ك.بايت/ث</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 MB/s</source>
        <translation>%1 م.بايت/ث</translation>
    </message>
    <message>
        <location line="+84"/>
        <source>Error of loading of the config.</source>
        <translation>خطأ في تحميل الإعدادات.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>خطأ في تحميل الشهادة.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>خطأ في تحميل المفتاح.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>تغيير المنطقة الزمنية غير مدعوم على نظامك.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>جدار الحماية غير مدعوم على نظامك.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>لم تُغيَّر المنطقة الزمنية لعدم توفر البيانات.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>ينتهي اشتراك VPN في: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>اسم ملف التحديث فارغ.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>الإعدادات</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>الحساب</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>تجديد الاشتراك</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>جدّده على الموقع لتبقى محميًا.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>اقطع الاتصال أولاً لتغيير الإعدادات</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>يحجب مفتاح الإيقاف الإنترنت ما دمت غير متصل.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>تغيير</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>تعذّر التحقق من هوية خدمة Velmora، لذلك لم يُرسَل إليها أي شيء.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>نعم</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>لا</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>موافق</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>إلغاء</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>فتح في متصفح</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>تعذّر فتح متصفح ويب. انسخ هذا الرابط إلى متصفح:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>يحجب مفتاح الإيقاف الإنترنت ما دمت غير متصل، لذا لا يمكن تحميل هذه الصفحة الآن. اتصل أولًا أو أوقف مفتاح الإيقاف، ثم افتح هذا الرابط:</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>المفضلة</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>موصى بها</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>سجّل الدخول إلى حساب Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>اسم المستخدم </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>كلمة المرور</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>تسجيل الدخول</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>يجب إدخال اسم المستخدم وكلمة المرور لتسجيل الدخول.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>تعذّر تثبيت المساعد الخاص بالبرنامج. يرجى التواصل مع الدعم.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>اسم المستخدم أو كلمة المرور غير صحيحة.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>لا يستطيع التطبيق الوصول إلى Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>لا يستطيع التطبيق الوصول إلى الشبكة.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>اتصال VPN نشط. 
هل تريد قطع الاتصال وتسجيل الخروج؟</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>هل تريد تسجيل الخروج؟</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>تسجيل الخروج</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>تحديث Tavrin</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>يتوفر تحديث جديد. هل تريد تنزيله؟</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>حدث خطأ أثناء تنزيل التحديث.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>حدث خطأ أثناء تثبيت التحديث.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>إصدارك قديم. يرجى تنزيل تطبيق Tavrin الجديد من </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>خروج</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>اتصال VPN نشط. هل تريد قطع الاتصال والخروج؟</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>تغيير حساب VPN</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>اتصال VPN نشط. 
هل تريد قطع الاتصال وتغيير حساب VPN؟</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>تحديث</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>جارٍ تنزيل التحديث. يرجى الانتظار...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>إلغاء</translation>
    </message>
</context>
<context>
    <name>QGuiApplication</name>
    <message>
        <source>QT_LAYOUT_DIRECTION</source>
        <translation>RTL</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>الموقع</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>اختر حساب VPN للاتصال</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>متابعة</translation>
    </message>
</context>
<context>
    <name>ServerItemDelegate</name>
    <message>
        <location filename="../../ui/ServerItemDelegate.cpp" line="+41"/>
        <source>%1 ms</source>
        <translation>%1 م.ث</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Latency unknown: not measured yet, or the server did not answer</source>
        <translation>زمن الاستجابة غير معروف: لم يُقَس بعد، أو لم يستجب الخادم</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>المواقع</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>المفضلة</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>VPN عادي</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>VPN مزدوج</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>بحث</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>لم يتم العثور على مواقع</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>الإعدادات</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>اللغة:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>اختر بروتوكول VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>التشغيل عند بدء النظام</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>الاتصال بـ VPN عند التشغيل</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>المنطقة الزمنية حسب IP</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>بعد الاتصال بخادم VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>مفتاح الإيقاف</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>حماية من تسرّب IPv4 وIPv6 وDNS4 وDNS6</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>الوصول إلى الأجهزة المحلية</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>الطابعات والموجّهات وغيرها</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>الإصدار:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>تفاصيل الاتصال</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>الحساب</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>تسجيل الخروج</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>لا يملك حسابك اشتراك VPN نشطًا.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>شراء اشتراك VPN على الموقع</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>نقبل على الموقع الدفع عبر أنظمة دفع مختلفة، منها Bitcoin وPayPal وYandex Money وغيرها.</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>اتصال</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>إعادة الاتصال</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>قطع الاتصال</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>خروج</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>اتصالك غير آمن الآن!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>اتصالك الآن مشفّر وآمن!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>جارٍ الاتصال بـ %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>متصل بـ %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>جارٍ إعادة إنشاء الاتصال بـ %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>الاتصال بـ %1</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: الإنترنت محجوب بمفتاح الإيقاف</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (أكثر أمانًا)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (أسرع)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>محاكاة HTTPS</translation>
    </message>
</context>
</TS>
