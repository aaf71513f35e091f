<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+78"/>
        <source>Yes</source>
        <translation>是</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>否</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>确定</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>更新</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>正在下载更新，请稍候...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>位置</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>连接详情</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>连接</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+75"/>
        <source>Reconnect</source>
        <translation>重新连接</translation>
    </message>
    <message>
        <location line="-74"/>
        <location line="+75"/>
        <source>Disconnect</source>
        <translation>断开连接</translation>
    </message>
    <message>
        <location line="-74"/>
        <location line="+75"/>
        <source>Quit</source>
        <translation>退出</translation>
    </message>
    <message>
        <location line="-37"/>
        <source>Your connection is not secured now!</source>
        <translation>您的连接现在不安全！</translation>
    </message>
    <message>
        <location line="+23"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>您的连接现已加密并受到保护！</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>正在连接到 %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>已连接到 %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>连接到 %1</translation>
    </message>
</context>
</TS>
