#include "standalone/host_ip.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/corba_config_items.h"
#include "standalone/registry.h"
#include "tests/support/config_items.h"

using NS_BUNDLEMGR1::CorbaConfigItems;

TEST(HostIP, IsAnAddressThatThisNodeCanListenOn) {
    std::string ip;
    {
        const qv_test::ScopedConfigItems items({}, "");
        ASSERT_TRUE(CorbaConfigItems::Instance()->GetHostIP(ip));
    }
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* address = nullptr;
    ASSERT_EQ(getaddrinfo(ip.c_str(), "0", &hints, &address), 0) << ip;
    const int fd = socket(address->ai_family, SOCK_STREAM, 0);
    EXPECT_EQ(bind(fd, address->ai_addr, address->ai_addrlen), 0) << ip;
    close(fd);
    freeaddrinfo(address);
}
