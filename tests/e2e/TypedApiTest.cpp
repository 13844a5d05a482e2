// The typed client API against the emulator process: each case of
// tests/data/e2e/typed-calls.txt makes typed calls and checks the records they filled from
// the documents the emulator produced; a call that changes the device is read back through
// others. What a call sends and how it reads a reply is tested against the daemon of the
// api tests.

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

#include "EmulatorProcess.h"
#include "support/KindedJson.h"
#include "support/TypedCalls.h"

using namespace pimav::detail;

TEST(TypedApi, CallsAgainstTheEmulator) {
    for (const DataCase& c : dataCases("e2e/typed-calls.txt")) {
        SCOPED_TRACE(c.where + " " + c.title);
        EmulatorProcess emulator("", {"--advertise", sourcePath("examples/advertised")});
        zmq::context_t context(1);
        AvMngApi api;
        api.jsonApi.ipcPort = static_cast<uint32_t>(emulator.port());
        ASSERT_EQ(api.init(context), 0);
        LogCapture log;
        runTypedCase(c, api, log);
    }
}
