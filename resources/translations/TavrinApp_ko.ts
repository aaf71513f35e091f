<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ko">
<context>
    <name>CustomMessageBox</name>
    <message>
        <location filename="../../ui/CustomMessageBox.cpp" line="+78"/>
        <source>Yes</source>
        <translation>예</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No</source>
        <translation>아니요</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ok</source>
        <translation>확인</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
</context>
<context>
    <name>ProgressDlg</name>
    <message>
        <location filename="../../ui/ProgressDlg.cpp" line="+69"/>
        <source>Update</source>
        <translation>업데이트</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Downloading update. Please wait...</source>
        <translation>업데이트를 다운로드하는 중입니다. 잠시 기다려 주세요...</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Cancel</source>
        <translation>취소</translation>
    </message>
</context>
<context>
    <name>SearchEdit</name>
    <message>
        <location filename="../../ui/SearchEdit.cpp" line="+14"/>
        <location line="+31"/>
        <source>Location</source>
        <translation>위치</translation>
    </message>
</context>
<context>
    <name>ShowLog</name>
    <message>
        <location filename="../../ui/ShowLog.cpp" line="+71"/>
        <source>Connection Details</source>
        <translation>연결 세부 정보</translation>
    </message>
</context>
<context>
    <name>SystemTray</name>
    <message>
        <location filename="../../ui/SystemTray.cpp" line="+28"/>
        <source>Connect</source>
        <translation>연결</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+75"/>
        <source>Reconnect</source>
        <translation>다시 연결</translation>
    </message>
    <message>
        <location line="-74"/>
        <location line="+75"/>
        <source>Disconnect</source>
        <translation>연결 끊기</translation>
    </message>
    <message>
        <location line="-74"/>
        <location line="+75"/>
        <source>Quit</source>
        <translation>종료</translation>
    </message>
    <message>
        <location line="-37"/>
        <source>Your connection is not secured now!</source>
        <translation>현재 연결이 보호되지 않습니다!</translation>
    </message>
    <message>
        <location line="+23"/>
        <source>Your connection is encrypted and secured now!</source>
        <translation>이제 연결이 암호화되어 보호됩니다!</translation>
    </message>
    <message>
        <location line="+36"/>
        <source>Connecting to %1</source>
        <translation>%1에 연결 중</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connected to %1</source>
        <translation>%1에 연결됨</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Connect %1</source>
        <translation>%1에 연결</translation>
    </message>
</context>
</TS>
