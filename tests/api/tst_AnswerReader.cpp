#include <QtTest>

#include <QDomDocument>

#include "AnswerReader.h"

namespace {
const char* const attributeNames[] = {"name", "user", "type", "a:b"};

QStringList treeWalk(const QByteArray& body)
{
    QDomDocument doc(QStringLiteral("request"));
    doc.setContent(body);
    QStringList children;
    for (QDomNode node = doc.documentElement().firstChild(); !node.isNull(); node = node.nextSibling()) {
        const QDomElement e = node.toElement();
        if (e.isNull())
            continue;
        QString line = e.tagName() + QLatin1Char('|');
        for (const char* name : attributeNames) {
            if (e.hasAttribute(QLatin1String(name)))
                line += QLatin1String(name) + QLatin1Char('=') + e.attribute(QLatin1String(name)) + QLatin1Char(' ');
        }
        line += QLatin1Char('|') + e.text() + QLatin1Char('|');
        for (QDomElement part = e.firstChildElement(); !part.isNull(); part = part.nextSiblingElement())
            line += part.tagName() + QLatin1Char('=') + part.text() + QLatin1Char(' ');
        children << line;
    }
    return children;
}

QStringList streamWalk(const QByteArray& body)
{
    AnswerReader answer(body);
    QStringList children;
    while (answer.next()) {
        QString line = answer.name() + QLatin1Char('|');
        for (const char* name : attributeNames) {
            const QStringRef value = answer.attribute(QLatin1String(name));
            if (!value.isNull())
                line += QLatin1String(name) + QLatin1Char('=') + value + QLatin1Char(' ');
        }
        line += QLatin1Char('|') + answer.text() + QLatin1Char('|');
        for (const AnswerReader::Part& part : answer.parts())
            line += part.name + QLatin1Char('=') + part.text + QLatin1Char(' ');
        children << line;
    }
    return children;
}
} // namespace

class TestAnswerReader : public QObject
{
    Q_OBJECT

private slots:
    void sameChildrenAsTheTree_data()
    {
        QTest::addColumn<QByteArray>("body");
        // Children at the end that the tree kept although a parse error cut them short.
        QTest::addColumn<int>("cutShort");
        QTest::newRow("any root name, prolog and doctype")
            << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?><!-- service --><?pi x?>"
                          "<!DOCTYPE answer SYSTEM \"answer.dtd\"><answer><ver type=\"lite\">dHJ1ZQ==</ver></answer>")
            << 0;
        QTest::newRow("entities in text and attributes")
            << QByteArray("<r><cert user=\"a&amp;b&#65;\">x&lt;y&#x41;&gt;&quot;&apos;</cert></r>") << 0;
        QTest::newRow("entities declared in the doctype") << QByteArray(
            "<!DOCTYPE r [<!ENTITY t \"dHJ1ZQ==\"><!ENTITY v \"<vpn name='e'/>\">]><r><auth>&t;</auth>&v;</r>")
                                                          << 0;
        QTest::newRow("CDATA is text") << QByteArray("<r><config><![CDATA[abc<def>]]>ghi<![CDATA[ ]]></config></r>")
                                       << 0;
        QTest::newRow("unknown children with nested elements are passed whole")
            << QByteArray("<r><unknown><vpn name=\"no\"/><deeper><x>t</x></deeper></unknown><vpn name=\"yes\"/></r>")
            << 0;
        QTest::newRow("update offer parts") << QByteArray(
            "<r><upgrade>x<ver>MS4w</ver><!--c--><link>bA==<y>QQ==</y></link><ver>Mi4w</ver></upgrade></r>")
                                            << 0;
        QTest::newRow("truncated in a text") << QByteArray("<r><config>YWJj</config><cert>ZGVm") << 1;
        QTest::newRow("mismatched end tag") << QByteArray("<r><key>a</key><cert>b</key><vpn/></r>") << 1;
    }
    void sameChildrenAsTheTree()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, cutShort);
        QStringList expected = treeWalk(body);
        // A child that an error cuts short is dropped, together with everything after it.
        expected.erase(expected.end() - cutShort, expected.end());
        QCOMPARE(streamWalk(body), expected);
    }
};

QTEST_GUILESS_MAIN(TestAnswerReader)
#include "tst_AnswerReader.moc"
