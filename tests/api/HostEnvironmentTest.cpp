// A host program configured through its environment only.

#include <gtest/gtest.h>

#include <chrono>
#include <zmq.hpp>

#include "pimAvMngApi/api/AvMngApi.h"
#include "support/ScopedEnv.h"

namespace {

TEST(AvMngApiHost, TimeLimitFromTheEnvironmentEndsAnExchangeWithASilentEndpoint) {
    zmq::context_t context;
    zmq::socket_t silent(context, zmq::socket_type::rep);  // takes requests, never answers
    silent.set(zmq::sockopt::linger, 0);
    silent.bind("tcp://127.0.0.1:*");
    const std::string bound = silent.get(zmq::sockopt::last_endpoint);

    ScopedEnv limit("AVMNG_TIMEOUT_MS", "300");
    AvMngApi api;
    api.jsonApi.ipcPort = static_cast<uint32_t>(std::stoul(bound.substr(bound.rfind(':') + 1)));
    ASSERT_EQ(api.init(context, "127.0.0.1"), 0);
    SessionStreamList list;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(api.getSourceSessionList(&list), ClientJsonApi::kErrTimeout);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(300));
    EXPECT_LT(waited, std::chrono::seconds(5));  // the default limit is 150 s
}

}  // namespace
