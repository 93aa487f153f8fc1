// The servant on the ORB as it is packaged, with nothing of the seam: what the seam and the library are
// measured against.
#include <iostream>

#include "request_path.hh"

#include "bench/request_path/target_servant.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: bench_plain_server FILE\n";
        return 2;
    }
    const char* endpoint[][2] = {{"endPoint", "giop:tcp:127.0.0.1:"}, {nullptr, nullptr}};
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv, "omniORB4", endpoint);
    ServeUntilStopped(orb, argv[1]);
    return 0;
}
