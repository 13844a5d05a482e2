#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "pimAvMngApi/model/IpAddrCfg.h"
#include "pimAvMngApi/model/Rtp.h"
#include "pimAvMngApi/model/SessionConnectionInfo.h"
#include "pimAvMngApi/model/Ssrc.h"
#include "pimAvMngApi/model/UdpPort.h"
#include "pimAvMngApi/model/Vlan.h"
#include "support/JsonText.h"
#include "support/LogCapture.h"

namespace {

// Reads each document into a record prepared by `make` and compares what it writes back.
template <typename T>
void runRows(const std::function<T()>& make, const std::vector<std::pair<const char*, const char*>>& rows) {
    for (const auto& [doc, expected] : rows) {
        T r = make();
        EXPECT_EQ(readThenWritten(r, doc), canon(expected)) << doc;
    }
}

TEST(TransportTypes, DefaultsAsWritten) {
    EXPECT_EQ(written(IpAddrCfg()),
              canon(R"({"local":"0.0.0.0","transport":"0.0.0.0","source-ip":"0.0.0.0","dscp":34,"ttl":64})"));
    EXPECT_EQ(written(Vlan()), canon(R"({"id":0,"priority":0,"tpid":33024})"));
    EXPECT_EQ(written(UdpPort()), canon(R"({"source":0,"destination":0})"));
    EXPECT_EQ(written(Ssrc()), canon(R"({"type":"unspecified","value":0})"));
    EXPECT_EQ(written(Rtp()), canon(R"({"payload-type":98,"sscr":{"type":"unspecified","value":0}})"));
    EXPECT_EQ(written(SessionConnectionInfo()), canon(R"({"remote":null,"origin":"jsonapi"})"));
    EXPECT_EQ(written(Ssrc(9, 1)), canon(R"({"type":"-","value":1})"));
}

TEST(TransportTypes, IpAddrCfgReading) {
    auto make = [] {
        IpAddrCfg c;
        c.m_local.set(0x0A000001);
        c.m_transport.set(0xEF010203);
        c.m_source.set(0xC0A80001);
        c.m_dscp = 1;
        c.m_ttl = 2;
        return c;
    };
    LogCapture capture;
    runRows<IpAddrCfg>(
        make,
        {
            {R"({})",
             R"({"local":"10.0.0.1","transport":"239.1.2.3","source-ip":"192.168.0.1","dscp":34,"ttl":64})"},
            {R"({"local":"","transport":"10.0.0.256","source-ip":"1.2.3.4","dscp":46,"ttl":300})",
             R"({"local":"10.0.0.1","transport":"239.1.2.3","source-ip":"1.2.3.4","dscp":46,"ttl":44})"},
            {R"({"local":"0.0.0.0"})",
             R"({"local":"0.0.0.0","transport":"239.1.2.3","source-ip":"192.168.0.1","dscp":34,"ttl":64})"},
            {R"({"local":{}})", "throws"},
            {R"({"dscp":"x"})", "throws"},
            {R"({"ttl":-1})", "throws"},
            {R"([])", "throws"},
        });
    EXPECT_EQ(capture.at(2), std::vector<std::string>{"Error parsing IP [10.0.0.256]: invalid IP address"});
}

TEST(TransportTypes, VlanUdpRtpReading) {
    runRows<Vlan>([] { return Vlan(); },
                  {{R"({"id":10,"priority":5,"tpid":34984})", R"({"id":10,"priority":5,"tpid":34984})"},
                   {R"({"id":65546,"priority":257})", R"({"id":10,"priority":1,"tpid":33024})"},
                   {R"({"id":true})", R"({"id":1,"priority":0,"tpid":33024})"},
                   {R"({"id":"7"})", "throws"}});
    runRows<UdpPort>([] { return UdpPort(5004, 5004); },
                     {{R"({})", R"({"source":0,"destination":0})"},
                      {R"({"source":70000,"destination":5006})", R"({"source":4464,"destination":5006})"},
                      {R"({"source":[]})", "throws"}});
    auto rtp = [] {
        Rtp r;
        r.m_payload_type = 100;
        r.m_ssrc = Ssrc(Ssrc::MANUAL, 9);
        return r;
    };
    runRows<Rtp>(
        rtp, {
                 {R"({})", R"({"payload-type":98,"sscr":{"type":"manual","value":9}})"},
                 {R"({"payload-type":300,"sscr":500})",
                  R"({"payload-type":44,"sscr":{"type":"session-id","value":500}})"},
                 {R"({"sscr":{"type":"other","value":7}})",
                  R"({"payload-type":98,"sscr":{"type":"manual","value":7}})"},
                 {R"({"sscr":{"type":"asio"}})", R"({"payload-type":98,"sscr":{"type":"asio","value":0}})"},
                 {R"({"sscr":{"type":"unspecified","value":4294967295}})",
                  R"({"payload-type":98,"sscr":{"type":"unspecified","value":4294967295}})"},
                 {R"({"sscr":null})", R"({"payload-type":98,"sscr":{"type":"manual","value":9}})"},
                 {R"({"sscr":"abc"})", "throws"},
                 {R"({"sscr":{"value":-1}})", "throws"},
                 {R"({"ssrc":[1]})", R"({"payload-type":98,"sscr":{"type":"manual","value":9}})"},
             });
    // A bare value that is no number switches the selection before asUInt throws.
    Rtp partial = rtp();
    EXPECT_ANY_THROW(readInto(partial, R"({"payload-type":7,"sscr":"abc"})"));
    EXPECT_EQ(partial.m_payload_type, 7);
    EXPECT_EQ(partial.m_ssrc, Ssrc(Ssrc::SESSION_ID, 9));
}

TEST(TransportTypes, SessionConnectionInfoCatchesItsOwnErrors) {
    auto make = [] {
        SessionConnectionInfo c;
        c.m_remote = "old";
        c.m_origin = SessionConnectionInfo::NMOS;
        return c;
    };
    runRows<SessionConnectionInfo>(
        make, {
                  {R"({})", R"({"remote":null,"origin":"jsonapi"})"},
                  {R"({"remote":null,"origin":"nmos"})", R"({"remote":null,"origin":"nmos"})"},
                  {R"({"remote":"ctl","origin":"NMOS"})", R"({"remote":"ctl","origin":"jsonapi"})"},
                  {R"({"remote":"ctl","origin":{}})", R"({"remote":"ctl","origin":"nmos"})"},
                  {R"({"remote":{},"origin":"jsonapi"})", R"({"remote":"old","origin":"nmos"})"},
                  {R"([1])", R"({"remote":"old","origin":"nmos"})"},
              });
    LogCapture capture;
    SessionConnectionInfo c;
    Json::Value doc = jsonOf(R"({"remote":{"a":1}})");
    EXPECT_NO_THROW(c.Deserialize(doc));
    EXPECT_EQ(capture.at(2), std::vector<std::string>{"[SessionConnectionInfo] Error de-serializing json [" +
                                                      doc.toStyledString() + "]"});
}

}  // namespace
