<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="vi">
<context>
    <name>AccountWindow</name>
    <message>
        <location filename="../../ui/AccountWindow.cpp" line="+94"/>
        <source>Account</source>
        <translation>Tài khoản</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Đăng xuất</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login VPN:</source>
        <translation>Tài khoản VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change</source>
        <translation>Đổi</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew on site</source>
        <translation>Gia hạn trên trang web</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Mua gói VPN trên trang web</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Trên trang web, chúng tôi nhận thanh toán qua nhiều hệ thống khác nhau, gồm Bitcoin, PayPal, Yandex Money và các hệ thống khác.</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>VPN subscription expires: %1</source>
        <translation>Gói VPN hết hạn: %1</translation>
    </message>
</context>
<context>
    <name>ConnectWindow</name>
    <message>
        <location filename="../../ui/ConnectWindow.cpp" line="+210"/>
        <source>Connected</source>
        <translation>Đã kết nối</translation>
    </message>
    <message>
        <location line="-1"/>
        <location line="+4"/>
        <location line="+3"/>
        <source>Show connection</source>
        <translation>Xem kết nối</translation>
    </message>
    <message>
        <location line="-2"/>
        <source>Connecting...</source>
        <translation>Đang kết nối...</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection...</source>
        <translation>Đang thiết lập lại kết nối...</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select VPN Location</source>
        <translation>Chọn vị trí VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Not connected</source>
        <translation>Chưa kết nối</translation>
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
        <translation>Lỗi tải cấu hình.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the certificate.</source>
        <translation>Lỗi tải chứng chỉ.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Error of loading of the key.</source>
        <translation>Lỗi tải khóa.</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Timezone changes does not support on your system.</source>
        <translation>Hệ thống của bạn không hỗ trợ đổi múi giờ.</translation>
    </message>
    <message>
        <location line="+257"/>
        <source>Firewall does not support on your system.</source>
        <translation>Hệ thống của bạn không hỗ trợ tường lửa.</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Timezone is not changed because of no data.</source>
        <translation>Không đổi múi giờ vì không có dữ liệu.</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>VPN subscription expires: %1</source>
        <translation>Gói VPN hết hạn: %1</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Name of update file is empty.</source>
        <translation>Tên tệp cập nhật bị trống.</translation>
    </message>
    <message>
        <location filename="../../ui/ConnectWindowForm.cpp" line="+132"/>
        <source>Settings</source>
        <translation>Cài đặt</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Account</source>
        <translation>Tài khoản</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew subscription</source>
        <translation>Gia hạn gói</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Renew it on the site to stay protected.</source>
        <translation>Hãy gia hạn trên trang web để tiếp tục được bảo vệ.</translation>
    </message>
    <message>
        <source>Disconnect first to change the settings</source>
        <translation>Hãy ngắt kết nối trước để thay đổi cài đặt</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected.</source>
        <translation>Ngắt kết nối khẩn cấp chặn Internet khi bạn chưa kết nối.</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Thay đổi</translation>
    </message>
</context>
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+59"/>
        <source>The identity of the Velmora service could not be verified, so nothing was sent to it.</source>
        <translation>Không thể xác minh danh tính của dịch vụ Velmora, vì vậy không có gì được gửi tới dịch vụ này.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Yes</source>
        <translation>Có</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>Không</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Hủy</translation>
    </message>
    <message>
        <source>Open in a browser</source>
        <translation>Mở trong trình duyệt</translation>
    </message>
    <message>
        <source>No web browser could be opened. Copy this link into one:</source>
        <translation>Không thể mở trình duyệt web nào. Hãy sao chép liên kết này vào trình duyệt:</translation>
    </message>
    <message>
        <source>The kill switch blocks the Internet while you are not connected, so this page cannot load now. Connect first, or turn the kill switch off, then open this link:</source>
        <translation>Ngắt kết nối khẩn cấp chặn Internet khi bạn chưa kết nối, nên trang này chưa thể tải lúc này. Hãy kết nối trước hoặc tắt ngắt kết nối khẩn cấp, rồi mở liên kết này:</translation>
    </message>
</context>
<context>
    <name>FavoriteServerItemDelegate</name>
    <message>
        <location filename="../../ui/FavoriteServerItemDelegate.cpp" line="+41"/>
        <source>Favorite</source>
        <translation>Yêu thích</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Recommended</source>
        <translation>Đề xuất</translation>
    </message>
</context>
<context>
    <name>LoginWindow</name>
    <message>
        <location filename="../../ui/LoginWindow.cpp" line="+66"/>
        <source>Sign in to your Velmora account</source>
        <translation>Đăng nhập vào tài khoản Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Username </source>
        <translation>Tên người dùng </translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Password</source>
        <translation>Mật khẩu</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Login</source>
        <translation>Đăng nhập</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>You must enter username and password to sign in.</source>
        <translation>Bạn phải nhập tên người dùng và mật khẩu để đăng nhập.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../../ui/MainWindow.cpp" line="+142"/>
        <source>Failed to install helper for program. Please contact support.</source>
        <translation>Không cài được trình trợ giúp của chương trình. Vui lòng liên hệ hỗ trợ.</translation>
    </message>
    <message>
        <location line="+128"/>
        <source>Wrong Login/Password.</source>
        <translation>Sai tên đăng nhập/mật khẩu.</translation>
    </message>
    <message>
        <location line="+29"/>
        <source>Application has no access to Velmora</source>
        <translation>Ứng dụng không truy cập được Velmora</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Application has no access to network.</source>
        <translation>Ứng dụng không truy cập được mạng.</translation>
    </message>
    <message>
        <location line="+144"/>
        <location line="+28"/>
        <source>VPN connection is active. 
Disconnect and logout?</source>
        <translation>Kết nối VPN đang hoạt động. 
Ngắt kết nối và đăng xuất?</translation>
    </message>
    <message>
        <location line="-27"/>
        <source>Do you want to logout?</source>
        <translation>Bạn có muốn đăng xuất không?</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+25"/>
        <source>Logout</source>
        <translation>Đăng xuất</translation>
    </message>
    <message>
        <location line="+187"/>
        <source>Tavrin Update</source>
        <translation>Cập nhật Tavrin</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Available new update. Download it?</source>
        <translation>Có bản cập nhật mới. Tải xuống?</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Error during downloading update.</source>
        <translation>Lỗi khi tải bản cập nhật.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Error during installing update.</source>
        <translation>Lỗi khi cài đặt bản cập nhật.</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Your version is outdated. Please, download new Tavrin app on </source>
        <translation>Phiên bản của bạn đã cũ. Vui lòng tải ứng dụng Tavrin mới tại </translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Exit</source>
        <translation>Thoát</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>VPN connection is active. Disconnect and exit?</source>
        <translation>Kết nối VPN đang hoạt động. Ngắt kết nối và thoát?</translation>
    </message>
    <message>
        <source>Change VPN login</source>
        <translation>Đổi tài khoản VPN</translation>
    </message>
    <message>
        <source>VPN connection is active. 
Disconnect and change the VPN login?</source>
        <translation>Kết nối VPN đang hoạt động. 
Ngắt kết nối và đổi tài khoản VPN?</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>Cập nhật</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>Đang tải bản cập nhật. Vui lòng chờ...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>Hủy</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>Vị trí</translation>
    </message>
</context>
<context>
    <name>SelectionAccountWindow</name>
    <message>
        <location filename="../../ui/SelectionAccountWindow.cpp" line="+45"/>
        <source>Select VPN login to connect</source>
        <translation>Chọn tài khoản VPN để kết nối</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Continue</source>
        <translation>Tiếp tục</translation>
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
        <translation>Chưa rõ độ trễ: chưa được đo, hoặc máy chủ không phản hồi</translation>
    </message>
</context>
<context>
    <name>ServerListWindow</name>
    <message>
        <location filename="../../ui/ServerListWindow.cpp" line="+149"/>
        <source>Locations</source>
        <translation>Vị trí</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Favorites</source>
        <translation>Yêu thích</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Standard VPN</source>
        <translation>VPN tiêu chuẩn</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Double VPN</source>
        <translation>VPN kép</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Search</source>
        <translation>Tìm kiếm</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No locations found</source>
        <translation>Không tìm thấy vị trí</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="+176"/>
        <source>Settings</source>
        <translation>Cài đặt</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Language:</source>
        <translation>Ngôn ngữ:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose VPN protocol:</source>
        <translation>Chọn giao thức VPN:</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Launch on startup</source>
        <translation>Khởi chạy cùng hệ thống</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Connect to VPN when app is started</source>
        <translation>Kết nối VPN khi khởi động</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Change timezone using IP address</source>
        <translation>Đổi múi giờ theo địa chỉ IP</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After connection to VPN server</source>
        <translation>Sau khi kết nối máy chủ VPN</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Kill switch</source>
        <translation>Ngắt kết nối khẩn cấp</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>IPv4, IPv6, DNS4, DNS6 leaks protection</source>
        <translation>Chống rò rỉ IPv4, IPv6, DNS4, DNS6</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Allow access to local devices</source>
        <translation>Truy cập thiết bị cục bộ</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Printers, routers, etc</source>
        <translation>Máy in, bộ định tuyến, v.v.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Version:</source>
        <translation>Phiên bản:</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>Chi tiết kết nối</translation>
    </message>
</context>
<context>
    <name>SubscriptionPurchaseWindow</name>
    <message>
        <location filename="../../ui/SubscriptionPurchaseWindow.cpp" line="+70"/>
        <source>Account</source>
        <translation>Tài khoản</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Log out</source>
        <translation>Đăng xuất</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Your account has no active VPN subscription.</source>
        <translation>Tài khoản của bạn không có gói VPN đang hoạt động.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Buy VPN subscription on the site</source>
        <translation>Mua gói VPN trên trang web</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>On the site we accept payments through various payment systems, including Bitcoin, PayPal, Yandex Money and others.</source>
        <translation>Trên trang web, chúng tôi nhận thanh toán qua nhiều hệ thống khác nhau, gồm Bitcoin, PayPal, Yandex Money và các hệ thống khác.</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>Kết nối</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+84"/>
        <source>Reconnect</source>
        <translation>Kết nối lại</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Disconnect</source>
        <translation>Ngắt kết nối</translation>
    </message>
    <message>
        <location line="-83"/>
        <location line="+84"/>
        <source>Quit</source>
        <translation>Thoát</translation>
    </message>
    <message>
        <location line="-46"/>
        <source>Your connection is not secured now!</source>
        <translation>Kết nối của bạn hiện không được bảo vệ!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>Kết nối của bạn giờ đã được mã hóa và bảo vệ!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>Đang kết nối tới %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>Đã kết nối tới %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Re-establishing the connection to %1</source>
        <translation>Đang thiết lập lại kết nối tới %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>Kết nối tới %1</translation>
    </message>
    <message>
        <source>Tavrin: Internet blocked by the kill switch</source>
        <translation>Tavrin: Internet bị chặn bởi ngắt kết nối khẩn cấp</translation>
    </message>
</context>
<context>
    <name>VpnProtocol</name>
    <message>
        <location filename="../../ui/SettingsWindow.cpp" line="-134"/>
        <source>OpenVPN TCP (safer)</source>
        <translation>OpenVPN TCP (an toàn hơn)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenVPN UDP (faster)</source>
        <translation>OpenVPN UDP (nhanh hơn)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Imitation HTTPS</source>
        <translation>Giả lập HTTPS</translation>
    </message>
</context>
</TS>
