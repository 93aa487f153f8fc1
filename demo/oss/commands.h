#pragma once

#include <string>

#include "demo/oss/naming_client.h"
#include "demo/oss/oss_orb.h"
#include "demo/oss/oss_session.h"
#include "demo/oss/settings.h"

namespace qv_oss {

/// What the subcommands do, each writing to standard output. Operations raise Problem.
class Commands {
  public:
    Commands(const OssOrb& orb, const Settings& settings);

    void Run();

  private:
    void Browse();
    void LogInAndOut();
    void Ping();
    void List();
    void Show();
    void WholeSession();
    void ChangePassword();
    void Annotate();
    void SetInfo();
    void Count();
    void Events();
    void Raise();

    OssSession LogIn(NamingClient& naming);
    static std::string EmsOf(const OssSession& session, const NamingClient& naming);
    void PrintEms(const OssSession& session);
    void PrintElements(const OssSession& session);

    const OssOrb& orb_;
    const Settings& settings_;
    const RemoteCaller caller_;
};

}  // namespace qv_oss
