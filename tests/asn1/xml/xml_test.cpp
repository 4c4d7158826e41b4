#include "asn1/parser/parser.h"
#include "tests/asn1/parser/text_forms.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;

TEST(Xml, AnOrdinaryDocumentIsPrintedAsItWas)
{
    const std::string_view documents[] = {
        "<a/>",
        "<a> </a>",
        "<a b=\"1\" c=\"\xC3\xA4&lt;&amp;&quot;'&#10;&#9;&#13;\">x &lt; y &amp; ]]&gt; \"'&#13;</a>",
        "<p>\n  <b>bold</b> <i>italic</i> tail\n</p>",
        "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\" xmlns=\"urn:other\"><s:Body "
        "xml:lang=\"fi\"/></s:Envelope>",
        "<SEQUENCE>\n<INTEGER value=\"x\">5</INTEGER>\n</SEQUENCE>",
        "<\xC3\xA4-._1 \xC3\xB6=\"\"/>",
    };
    for (const std::string_view document : documents)
        EXPECT_EQ(XmlOf(document), std::string(document) + "\n");
}

TEST(Xml, KeepsItsMeaningInEveryForm)
{
    const std::string_view documents[] = {
        "<a>hi<b/>'there'</a>",
        "<SEQUENCE xmlns=\"urn:x-asn1:template\"><include/><case/><x/></SEQUENCE>",
        "<list xmlns=\"urn:x-asn1:template\"><item token=\"\"/><item token=\"\" brackets=\"1,\\[2]\"/></list>",
    };
    for (const std::string_view document : documents) {
        SCOPED_TRACE(document);
        CCryptoParser parser;
        ASSERT_TRUE(parser.Load_XML_Memory(document));
        ExpectReadsBack(parser, xmlForm, {templateForm, jsonForm, xmlForm});
    }
}

TEST(Xml, ReadsWhatStandsForTheSame)
{
    const std::pair<std::string_view, const char*> cases[] = {
        {"<?xml version='1.0'?>\r\n<!-- c --><?p i?>\n<a b = 'x\r\ny\tz' ></a >\n<!-- end -->", "<a b=\"x y z\"/>\n"},
        {"<!DOCTYPE a [ <!ENTITY x \"]>\"> <!-- ' ]> --> ]><a>1</a>", "<a>1</a>\n"},
        {"<!DOCTYPE a [<!--> ]> --> ]><a/>", "<a/>\n"},
        {"<!DOCTYPE a SYSTEM 'file:///etc/hostname'><a>&#65;&#x42;&apos;&quot;</a>", "<a>AB'\"</a>\n"},
        {"<a>&#x000000010FFFF;</a>", "<a>\xF4\x8F\xBF\xBF</a>\n"},
        {"<a>x<![CDATA[<&\r\n]]]]><!-- gone -->z\r</a>", "<a>x&lt;&amp;\n]]z\n</a>\n"},
        {"\xFF\xFE<\0a\0/\0>\0"sv, "<a/>\n"},
        {"<list xmlns='urn:x-asn1:template'>\n<SET/>\n</list>", "<SET xmlns=\"urn:x-asn1:template\"/>\n"},
    };
    for (const auto& [text, printed] : cases)
        EXPECT_EQ(XmlOf(text), printed) << text;
}

TEST(Xml, SaysWhyAndWhereTextIsRefused)
{
    const std::pair<std::string_view, const char*> cases[] = {
        {"", "Parsing failed; Token not expected?; row=1,col=1"},
        {"text", "Parsing failed; Token not expected: text (token=33); row=1,col=1"},
        {"<a/><b/>", "Parsing failed; Token not expected: b (token=91); row=1,col=5"},
        {"<a>\n<b></a>", "XML end tag not found: b; row=2,col=4"},
        {"<a>", "XML end tag not found: a; row=1,col=4"},
        {"<a></a", "CCryptoLexicalAnalyzer::scan; XML end tag expected (row=1,col=7)"},
        {"<a></a b>", "CCryptoLexicalAnalyzer::scan; XML end tag expected (row=1,col=8)"},
        {"<a b=1/>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=6)"},
        {"<a b/>", "Parsing failed; Token not expected?; row=1,col=5"},
        {"<a b='1' b='2'/>", "XML parsing error; row=1,col=15"},
        {"<a b='<'/>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=7)"},
        {"<a b='1", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=6)"},
        {"< a/>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=2)"},
        {"<1a/>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=2)"},
        {"<a>\xEF\xBF\xBE</a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=4)"},
        {"<a>&unknown;</a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=13)"},
        {"<a>&#0;</a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=8)"},
        {"<a>&#xD800;</a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=12)"},
        {"<a>&#x0000000010FFFF;</a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=4)"},
        {"<a b='1'c='2'/>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=9)"},
        {"<a>&lt</a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=4)"},
        {"<a>\x01</a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=4)"},
        {"<a>\0</a>"sv, "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=4)"},
        {"<a>\xC0\x80</a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=4)"},
        {"<a>]]></a>", "CCryptoLexicalAnalyzer::scan; XML parsing error (row=1,col=4)"},
        {"<a><![CDATA[x]]</a>", "CCryptoLexicalAnalyzer::scan; CDATA PARSING ERROR (row=1,col=4)"},
        {"<a><![CDAT[x]]></a>", "CCryptoLexicalAnalyzer::scan; CDATA PARSING ERROR (row=1,col=4)"},
        {"<a><![CDATA[\x01]]></a>", "CCryptoLexicalAnalyzer::scan; CDATA PARSING ERROR (row=1,col=4)"},
        {"<!-- x", "CCryptoLexicalAnalyzer::scan; HTML/XML DECLARATION PARSING ERROR (row=1,col=1)"},
        {"<!-- x -- y --><a/>", "CCryptoLexicalAnalyzer::scan; HTML/XML DECLARATION PARSING ERROR (row=1,col=1)"},
        {"<?><a/>", "CCryptoLexicalAnalyzer::scan; HTML/XML DECLARATION PARSING ERROR (row=1,col=1)"},
        {"<?xml ", "CCryptoLexicalAnalyzer::scan; HTML/XML DECLARATION PARSING ERROR (row=1,col=1)"},
        {"<!DOCTYPE a [", "CCryptoLexicalAnalyzer::scan; HTML/XML DECLARATION PARSING ERROR (row=1,col=14)"},
        {"<!ELEMENT a>", "CCryptoLexicalAnalyzer::scan; HTML/XML DECLARATION PARSING ERROR (row=1,col=1)"},
        {"<SET xmlns='urn:x-asn1:template' size='1'/>",
         "Parsing failed; The attribute is not expected or not understood: size; row=1,col=42"},
        {"<SET xmlns='urn:x-asn1:template' value='include /etc/hostname'/>",
         "Parsing failed; The attribute is not expected or not understood: value; row=1,col=63"},
        {"<list xmlns='urn:x-asn1:template' brackets='1'><NULL/></list>",
         "Parsing failed; Only items are expected in: list; row=1,col=62"},
        {"<list xmlns='urn:x-asn1:template'>5</list>", "Parsing failed; Only items are expected in: list; row=1,col=43"},
        {"<SET xmlns='urn:x-asn1:template' token='a'/>",
         "Parsing failed; The attribute is not expected or not understood: token; row=1,col=43"},
        {"<item xmlns='urn:x-asn1:template' token='a[1]'/>",
         "Parsing failed; The attribute is not expected or not understood: token; row=1,col=47"},
        {"<item xmlns='urn:x-asn1:template' token='a,b'/>",
         "Parsing failed; The attribute is not expected or not understood: token; row=1,col=46"},
        {"<SET xmlns='urn:x-asn1:template'><NULL xmlns='urn:other'/></SET>",
         "Parsing failed; The attribute is not expected or not understood: xmlns; row=1,col=57"},
        {"<a xmlns='urn:x-asn1:template' operation='b'/>",
         "Parsing failed; The attribute is not expected or not understood: operation; row=1,col=45"},
        {"<SET xmlns='urn:x-asn1:template' value='1'>x</SET>", "Parsing failed; The text is not expected in: SET; row=1,col=45"},
        {"<SET xmlns='urn:x-asn1:template'>x<NULL/></SET>", "Parsing failed; The text is not expected in: SET; row=1,col=42"},
    };
    for (const auto& each : cases) {
        const auto [text, reason] = each;
        SCOPED_TRACE(text);
        EXPECT_EQ(Reason([text = text] { return CCryptoParser().Load_XML_Memory(text); }), reason);
    }
}

} // namespace
