// Messages from outside: what is read of them, and what is refused before it costs anything.

#include "onvif/SoapMessage.h"

#include <QElapsedTimer>
#include <QTest>

namespace {

QByteArray envelope(const QByteArray& body)
{
    return "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\"><s:Body>" + body +
           "</s:Body></s:Envelope>";
}

std::optional<SoapMessage> read(const QByteArray& bytes)
{
    return SoapMessage::read(bytes, SoapMessage::maxBytes);
}

} // namespace

class TestSoapMessage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void elements();
    void result();
    void written();
    void faults_data();
    void faults();
    void refused_data();
    void refused();
    void limits();
    void refusedQuickly_data();
    void refusedQuickly();
    void textForPeople();
};

void TestSoapMessage::elements()
{
    const auto root =
        XmlElement::read("<a xmlns='urn:x'>\n<b token='1'> one </b><c><b>two</b></c><b>&lt;3</b></a>", 1000);
    QVERIFY(root);
    QCOMPARE(root->name, QString("a"));
    QCOMPARE(root->space, QString("urn:x"));
    QCOMPARE(root->children.size(), std::size_t(3));
    QCOMPARE(root->textOf("b"), QString("one"));
    QCOMPARE(root->find("b")->token, QString("1"));
    QCOMPARE(root->all("b").size(), std::size_t(3));
    QCOMPARE(root->all("b").back()->text, QString("<3"));
    QCOMPARE(root->child("c")->textOf("b"), QString("two"));
    QVERIFY(root->child("d") == nullptr && root->find("d") == nullptr);
    QCOMPARE(root->textOf("d"), QString());
}

void TestSoapMessage::result()
{
    const auto message = read("<?xml version='1.0' encoding='UTF-8'?>" +
                              envelope("<x:GetThingResponse xmlns:x='urn:x'><x:Name>K\xc3\xb6ln</x:Name>"
                                       "</x:GetThingResponse>"));
    QVERIFY(message);
    QVERIFY(!message->fault);
    QCOMPARE(message->body.name, QString("GetThingResponse"));
    QCOMPARE(message->body.space, QString("urn:x"));
    QCOMPARE(message->body.textOf("Name"), QString::fromUtf8("K\xc3\xb6ln"));
    const auto old =
        read("<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Header><h/></e:Header>"
             "<e:Body><r/></e:Body></e:Envelope>");
    QVERIFY(old);
    QCOMPARE(old->body.name, QString("r"));
    QVERIFY(old->header.find("h") != nullptr);
}

void TestSoapMessage::written()
{
    const auto message = read(SoapMessage::write("<h>1</h>", "<b xmlns='urn:b'>%1 %2</b>"));
    QVERIFY(message);
    QCOMPARE(message->header.textOf("h"), QString("1"));
    QCOMPARE(message->body.text, QString("%1 %2"));
    QCOMPARE(message->body.space, QString("urn:b"));
}

void TestSoapMessage::faults_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QString>("reason");
    QTest::newRow("SOAP 1.2")
        << QByteArray("<s:Fault><s:Code><s:Value>s:Sender</s:Value><s:Subcode><s:Value>ter:InvalidArgVal"
                      "</s:Value><s:Subcode><s:Value>ter:NoProfile</s:Value></s:Subcode></s:Subcode></s:Code>"
                      "<s:Reason><s:Text xml:lang='en'>No such\nprofile</s:Text></s:Reason></s:Fault>")
        << QStringList{"Sender", "InvalidArgVal", "NoProfile"} << "No such profile";
    QTest::newRow("SOAP 1.1")
        << QByteArray(
               "<s:Fault><faultcode>ter:NotAuthorized</faultcode><faultstring>no</faultstring></s:Fault>")
        << QStringList{"NotAuthorized"} << "no";
    QTest::newRow("nothing in it") << QByteArray("<s:Fault/>") << QStringList() << QString();
}

void TestSoapMessage::faults()
{
    QFETCH(QByteArray, body);
    QFETCH(QStringList, codes);
    QFETCH(QString, reason);
    const auto message = read(envelope(body));
    QVERIFY(message && message->fault);
    QCOMPARE(message->fault->codes, codes);
    QCOMPARE(message->fault->reason, reason);
}

void TestSoapMessage::refused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no XML") << QByteArray("HTTP/1.1 200 OK");
    QTest::newRow("another document") << QByteArray("<html><body><p/></body></html>");
    QTest::newRow("another envelope")
        << QByteArray("<s:Envelope xmlns:s='urn:s'><s:Body><a/></s:Body></s:Envelope>");
    QTest::newRow("no body") << QByteArray("<s:Envelope xmlns:s='http://www.w3.org/2003/05/soap-envelope'/>");
    QTest::newRow("an empty body") << envelope("");
    QTest::newRow("cut") << envelope("<a><b></b></a>").chopped(5);
    QTest::newRow("more behind it") << envelope("<a/>") + "<b/>";
    QTest::newRow("crossed") << envelope("<a><b></a></b>");
    QTest::newRow("an attribute twice") << envelope("<a b='1' b='1'/>");
    QTest::newRow("an unknown prefix") << envelope("<y:a/>");
    QTest::newRow("an unknown entity") << envelope("<a>&b;</a>");
    QTest::newRow("a document type") << "<!DOCTYPE a>" + envelope("<a/>");
    QTest::newRow("an entity from a file")
        << "<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/passwd'>]>" + envelope("<a>&b;</a>");
    QTest::newRow("a terminal's command") << envelope("<a>&#27;[2J</a>");
    QTest::newRow("UTF-16") << QByteArray("\xff\xfe<\0a\0/\0>\0", 10);
}

void TestSoapMessage::refused()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!read(bytes));
}

void TestSoapMessage::limits()
{
    const auto nested = [](int depth) {
        return QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
    };
    QVERIFY(XmlElement::read(nested(XmlElement::maxDepth), SoapMessage::maxBytes));
    QVERIFY(!XmlElement::read(nested(XmlElement::maxDepth + 1), SoapMessage::maxBytes));
    const auto row = [](int count) { return "<r>" + QByteArray("<a/>").repeated(count - 1) + "</r>"; };
    QVERIFY(XmlElement::read(row(XmlElement::maxElements), SoapMessage::maxBytes));
    QVERIFY(!XmlElement::read(row(XmlElement::maxElements + 1), SoapMessage::maxBytes));
    const auto attributes = [](int count) {
        QByteArray text = "<a";
        for (int i = 0; i < count; ++i) {
            text += " b" + QByteArray::number(i) + "='1'";
        }
        return text + "/>";
    };
    QVERIFY(XmlElement::read(attributes(XmlElement::maxAttributes), SoapMessage::maxBytes));
    QVERIFY(!XmlElement::read(attributes(XmlElement::maxAttributes + 1), SoapMessage::maxBytes));
    QVERIFY(XmlElement::read("<a></a>", 7));
    QVERIFY(!XmlElement::read("<a></a>", 6));
}

void TestSoapMessage::refusedQuickly_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QByteArray attributes = "<a";
    QByteArray namespaces = "<a";
    for (int i = 0; attributes.size() < SoapMessage::maxBytes - 100; ++i) {
        attributes += " b" + QByteArray::number(i) + "=''";
        namespaces += " xmlns:n" + QByteArray::number(i) + "='urn:" + QByteArray::number(i) + "'";
    }
    QTest::newRow("attributes") << attributes + "/>";
    QTest::newRow("namespaces") << namespaces.left(SoapMessage::maxBytes - 100) + "'/>";
    QByteArray deep;
    for (int level = 0; level < XmlElement::maxDepth - 1; ++level) {
        deep += "<a";
        for (int i = 0; i < XmlElement::maxAttributes; ++i) {
            deep += " xmlns:n" + QByteArray::number(level * XmlElement::maxAttributes + i) + "='u'";
        }
        deep += '>';
    }
    deep += QByteArray("<n0:b/>").repeated((SoapMessage::maxBytes - deep.size() - 200) / 7);
    QTest::newRow("namespaces far away") << deep;
    QByteArray entities = "<!DOCTYPE a [<!ENTITY e0 'x'>";
    for (int i = 1; i < 30; ++i) {
        const QByteArray last = "&e" + QByteArray::number(i - 1) + ";";
        entities += "<!ENTITY e" + QByteArray::number(i) + " '" + last.repeated(10) + "'>";
    }
    QTest::newRow("a billion laughs") << entities + "]><a>&e29;</a>";
    QTest::newRow("a long text") << "<a>" + QByteArray(SoapMessage::maxBytes - 7, 'x');
    QTest::newRow("many references") << "<a>" + QByteArray("&amp;").repeated(SoapMessage::maxBytes / 5 - 2);
}

void TestSoapMessage::refusedQuickly()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(bytes.size() <= SoapMessage::maxBytes);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!read(bytes));
    QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
}

void TestSoapMessage::textForPeople()
{
    QCOMPARE(plainText(" Front\n\tdoor "), QString("Front door"));
    QCOMPARE(plainText(QString::fromUtf8("a\xc2\x9b"
                                         "31m\xe2\x80\xae"
                                         "b")),
             QString("a 31m b"));
    QCOMPARE(plainText(QString(1000, 'x'), 10), QString(10, 'x'));
    QCOMPARE(plainText("123 456", 4), QString("123"));
    QCOMPARE(plainText(QString::fromUtf8("K\xc3\xb6ln")), QString::fromUtf8("K\xc3\xb6ln"));
}

QTEST_GUILESS_MAIN(TestSoapMessage)
#include "tst_soapmessage.moc"
