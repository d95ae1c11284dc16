// A port mapper whose answers are the test's, on port 111 of a private network.
#pragma once

#include "tests/support/rpc_server.h"

using PortMapperQuery = RpcCall;

class FakePortMapper : public RpcServer
{
  public:
    explicit FakePortMapper(Answer answer) : RpcServer(111, std::move(answer)) {}
};
