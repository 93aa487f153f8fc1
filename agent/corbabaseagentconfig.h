#pragma once

#include <ace/Process_Manager.h>
#include <ace/RW_Mutex.h>
#include <ace/Thread_Mutex.h>
#include <orbsvcs/CosNamingC.h>
#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <ctime>
#include <list>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "platform/export.h"
#include "platform/name_value.h"
#include "request/aclmgr.h"

struct X509_crl_st;
struct x509_st;

namespace NS_CORBA {

class CorbaI;
class MgrFactory;
class RequestInterceptorBase;

/// The hub of the agent: owns the ORB, the root POA, every setting, the companion service processes and the
/// registries. One source file per group of operations below.
///
/// Errors: query and configuration operations answer by a bool, file operations by 0 or -1; a
/// CORBA::Exception is logged and turned into that answer, other exceptions pass through. Thread safety:
/// settings are written by Init before the ORB runs and read by any thread without a lock. Those of the two
/// companion services alone are written later too, by the two Update operations, which nothing that reads
/// them may overlap. What a group says of its own comes on top of that.
class QV_API CorbaBaseAgentConfig {
  public:
    // -- Construction, start and the ORB: corbabaseagentconfig.cpp ------------------------------------------

    /// The only instance, made by the first call, also by the first one after Destroy(): whoever asks then,
    /// the destructor of a CorbaI included, silently gets a fresh object without settings and without an ORB.
    /// Null only when the creation lock can't be taken.
    static CorbaBaseAgentConfig* Instance();
    /// Deletes the instance, which nobody may be using any more. Processes that it started live on; ending
    /// them is DestroyService.
    static void Destroy();

    /// Reads the settings, starts the companion services and brings up the ORB and its root POA. To be called
    /// once. On false the ORB can't be used; services started by then run on, unless it was a service that
    /// failed.
    bool Init(const std::string& bundleName);

    /// A new reference to the ORB, which the caller releases; null before Init.
    CORBA::ORB* GetOrb();
    /// Takes a reference of its own to `orb` and gives up the one to the former ORB. Not while the ORB runs:
    /// GetOrb, which requests call, takes no lock.
    void SetOrb(CORBA::ORB* orb);
    /// A new reference to the root POA, which the caller releases; nil before Init.
    PortableServer::POA* GetRootPoa();

    int GetArgc();  ///< number of ORB arguments
    /// The ORB arguments, which stay the singleton's until the next CorbaBaseAgentReConfig; null before Init.
    char** GetArgv();

    /// A count of registered managers and modules. Nothing happens at zero, and it may go below. Any thread.
    /// @{
    void _add_ref();
    void _remove_ref();
    /// @}

    void SetCorbaBundleName(const std::string& name);  ///< for the bundle's own use, as Init keeps it
    std::string GetCorbaBundleName();                  ///< the name that Init or SetCorbaBundleName was given

    /// May a client at this IPv4 address, in host byte order, use the agent? To be asked by the bundle: the
    /// library itself refuses nobody. Any thread, from Init on.
    bool IsValidOssIP(unsigned int ip);

    // -- Settings: config_items.cpp -------------------------------------------------------------------------

    /// Reads all settings, replaces loopback host names and composes the command lines. Always true.
    bool GetOption();

    /// Settings as the platform delivers them.
    using NameValueList = std::vector<NS_BUNDLEMGR1::NameValueStru>;
    /// Looks `key` up in `items`; when it is there, converts its value (decimal, unvalidated, cut to the
    /// width of `out`) and stores it, else logs and leaves `out` as it is.
    /// @{
    void GetOptionByName(const NameValueList& items, const std::string& key, bool& out);
    void GetOptionByName(const NameValueList& items, const std::string& key, int& out);
    void GetOptionByName(const NameValueList& items, const std::string& key, unsigned int& out);
    void GetOptionByName(const NameValueList& items, const std::string& key, unsigned long& out);
    void GetOptionByName(const NameValueList& items, const std::string& key, unsigned short& out);
    void GetOptionByName(const NameValueList& items, const std::string& key, char& out);
    void GetOptionByName(const NameValueList& items, const std::string& key, std::string& out);
    /// @}

    /// True for exactly "localhost" and "127.0.0.1".
    bool IsLocalHost(const char* host);
    /// Asks the system for the node name and keeps it; on failure the former value stays.
    void GetHostName();
    /// The node name as last asked for; "localhost" at first.
    std::string GetHostNameAndReturn();

    unsigned long IteratorNum() const { return m_IteratorNum; }  ///< most iterators of all OSSs together
    unsigned long IteratorRestriction() const { return m_IteratorRestriction; }  ///< most of one OSS
    unsigned long TimeInterval() const { return m_TimeInterval; }  ///< seconds, of the bundle's timer
    unsigned long TimeOut() const { return m_TimeOut; }  ///< seconds that an iterator may be left unused
    unsigned long EventQueueLength() const { return m_EventQueueLength; }    ///< events
    unsigned long AlarmTimeout() const { return m_AlarmTimeout; }            ///< seconds
    unsigned long HeartBeatTimeout() const { return m_HeartBeatTimeout; }    ///< seconds
    unsigned long OtherEventTimeout() const { return m_OtherEventTimeout; }  ///< seconds
    bool ORBThreadPool() const { return m_ORBThreadPool; }       ///< whether a pool serves requests
    unsigned int GetORBThrdNum() const { return m_ORBThrdNum; }  ///< 0 stands for 4
    unsigned int GetSSLMode() const { return m_SSLMode; }        ///< 0 plain IIOP, 1 SSL
    /// Whether the calls of each operation are counted.
    bool IsInterceptorEnabled() const { return m_vecFlags[kFlagInterceptor] != 0; }
    /// The form of time strings, see TimeChange.
    int TimeShowAppearance() const { return static_cast<signed char>(m_vecFlags[kFlagTimeShow]); }
    /// The zone of time strings, see TimeChange.
    int TimeZoneRefPoint() const { return static_cast<signed char>(m_vecFlags[kFlagTimeZone]); }
    /// Whether events are pushed one after the other.
    bool IsSingleThreadPushEvent() const { return m_SingleThreadPushEvent != 0; }
    bool IsUseIPAndPort() const { return m_UseIPAndPort; }  ///< whether IOR_Parser::GetHostInfo adds the port
    /// Whether the event channel outlives the agent.
    bool PersistentEventChannel() const { return m_PersistentEventChannel; }
    bool GetEmsPingMode() const { return m_EmsPingMode; }  ///< whether the bundle is to ping each OSS
    /// What the bundle is to do when all sessions are taken: 1 ends the oldest, else the newcomer is refused.
    int GetSessionReleaseStrategy() const { return m_SessionReleaseStrategy; }
    int GetMaxSession() const { return m_MaxSession; }       ///< most sessions at once
    int GetSilentTime() const { return m_SilentTime; }       ///< seconds
    std::string EmsName() const { return m_EmsName; }        ///< part of the session factory's name
    std::string EmsVersion() const { return m_EmsVersion; }  ///< always empty
    std::string IDLVersion() const { return m_IDLVersion; }  ///< part of the session factory's name
    std::string GetCorbaAgentAddress() const { return m_CorbaAgentHost; }  ///< the host, without a port
    std::string GetNonSSLProfile() const { return m_NonSSLProfile; }       ///< file name, or empty

    // -- Command lines: command_lines.cpp -------------------------------------------------------------------

    /// Append the composed command to the member of that name, which they don't clear first.
    /// @{
    void GetNamingServiceCmd();
    void GetNotifyServiceCmd();
    void GetCorbaAgentCmd();
    /// @}

    /// Reads the settings and splits the agent's command into GetArgc and GetArgv. False when it can't be
    /// split.
    bool CorbaBaseAgentReConfig();

    /// Takes the private options -ns, -nt and -out with their values out of `argv`; `argc` becomes the number
    /// of arguments kept, which stand first and in their order. What was taken stands behind them.
    void parse_args(int& argc, char** argv);

    /// The text behind the first occurrence of `key` in `text`; empty when there is none.
    std::string GetRightSubStr(const std::string& key, const std::string& text);

    // -- IOR files: ior_files.cpp ---------------------------------------------------------------------------

    /// Writes the stringified `object` to `file`, mode 0640 at most. What the file held is gone before the
    /// reference is made into text, so a failure there leaves it empty. 0 doesn't mean that all was written:
    /// a full disk is only logged. Any thread may call it; the process's file mask is another one for a
    /// moment, also for files that other threads make then.
    int Write_ior(const char* file, CORBA::Object* object);
    /// Reads a reference from the first line of `file`. `object` receives a new reference, nil on most
    /// failures. Any thread may call it.
    int Read_ior(const char* file, TAO_Pseudo_Out_T<CORBA::Object> object);

    // -- Naming service: naming.cpp; nothing is cached, no lock is held -------------------------------------

    // Any thread, but not beside UpdateNamingServiceParams.

    /// The root context, by the IOR file of option -ns if there is one, else by host and port.
    bool GetNamingService(TAO_Objref_Out_T<CosNaming::NamingContext> context);
    /// The object bound under `name`. False, with `object` as it was or nil, when there is none.
    bool GetRef(const CosNaming::Name& name, TAO_Pseudo_Out_T<CORBA::Object> object);
    /// Binds `object` (OMG Naming Service), making the contexts on its way. An existing binding of that name
    /// is replaced.
    bool RegistName(const CosNaming::Name& name, CORBA::Object* object);
    /// Unbinds `name` and every context on its way, from the leaf to the root.
    bool UnRegistName(const CosNaming::Name& name);
    /// The five components of the session factory's name, as TMF MTNM prescribes them.
    void ConstructEmsFactoryName(CosNaming::Name& name);
    /// Binds the session factory under its TMF MTNM name and writes it to the file of option -out.
    bool RegistEMSFactoryName(CORBA::Object* object);
    /// Unbinds the session factory as UnRegistName does. The file stays.
    bool UnRegistEMSFactoryName();
    /// Where the EMS stands, and the host and port of the agent as "host:port".
    void GetEmsAdditionalInfo(std::string& location, std::string& address);

    // -- Companion services: companion_services.cpp; one thread at a time -----------------------------------

    /// Starts the services that are configured to be, with a fixed grace period after each. False when the
    /// environment root is missing, a command asks as a format for more than it is given (every "%" but "%%"
    /// is a directive, and finds empty text; eight of them do), or a process can't be spawned; a service that
    /// dies later goes unnoticed.
    bool AutoStartService();
    /// Kills the services that were started, without waiting for them.
    void AutoExitService();
    void DestroyService();  ///< AutoExitService, for AgentServer::Destroy

    /// Read a service's settings again, for the operations that look for the service. Names and options that
    /// are missing become empty; a port that is missing stays (naming) or becomes 0 (notify). Without a lock:
    /// no other thread may be looking for that service meanwhile, as the operations of the naming service,
    /// the two below and GetNotifyFactory do, SuppilerMgr::check_channel_valid among their callers.
    /// @{
    bool UpdateNamingServiceParams();
    bool UpdateNotifyServiceParams(const char* name);
    /// @}

    /// Host and port as configured, the port for SSL if `ssl`. Always true.
    /// @{
    bool GetNamingServiceAddr(std::string& host, int& port, bool ssl);
    bool GetNotifyServiceAddr(std::string& host, int& port, bool ssl);
    /// @}

    /// Finds the channel factory, by its IOR file if there is one, else in the naming service. Any thread,
    /// but not beside UpdateNamingServiceParams.
    bool GetNotifyFactory(TAO_Objref_Out_T<CosNotifyChannelAdmin::EventChannelFactory> factory);

    // -- Alarms: notification/alarm_text.cpp; any thread ----------------------------------------------------

    /// Appends the text that the bundle's callback object makes of an alarm; nothing without such an object.
    void ConvertTMFAlarmEventToStr(std::stringstream& out, const CosNotification::StructuredEvent& event);

    // -- Timeouts: timeout_policies.cpp; any thread ---------------------------------------------------------

    /// Bound every outgoing call of the ORB, or of the calling thread, to `ullTimeOut` units of 100
    /// nanoseconds, by the policy RelativeRoundtripTimeout (CORBA 3.0, chapter 22). What was set before at
    /// that level is replaced. False when the ORB refuses; nothing is raised.
    /// @{
    bool SetORBTimeOutPolicy(TAO_Pseudo_Var_T<CORBA::ORB>& orb, const unsigned long& ullTimeOut);
    bool SetCurrentThreadTimeOutPolicy(TAO_Pseudo_Var_T<CORBA::ORB>& orb, const unsigned long& ullTimeOut);
    /// @}
    /// The longest timeout that a bundle is to ask for, one day, in units of 100 nanoseconds.
    unsigned long GetMaxNanoSecondForTimeOut();

    // -- SSL certificates and revocation: ssl_certificates.cpp; on the thread of Init -----------------------

    /// Learns from the service configuration file "SSL_Profile" which files the ORB's SSL layer uses. A file
    /// that can't be opened is logged and changes nothing. A line of 512 characters or more is never got
    /// past.
    void GetNBISSLCertificateInfo();
    std::string GetNBISSLPrivateKey() { return m_NBISSLPrivateKey; }              ///< file name
    std::string GetNBISSLCertificate() { return m_NBISSLCertificate; }            ///< file name
    std::string GetNBISSLCAfile() { return m_NBISSLCAfile; }                      ///< file name
    std::string GetNBISSLPrivateKeyPasswd() { return m_NBISSLPrivateKeyPasswd; }  ///< not to be logged
    std::string GetNBISSLCRL() { return m_NBISSLCRL; }  ///< directory of the revocation lists, with a slash
    /// False when the agent's certificate was found revoked at the start.
    bool GetNBISSLCRLCheckStatus() { return m_NBISSLCRLCheckStatus; }

    /// True for a name that holds ".crl" or ".CRL", at its end or elsewhere.
    bool IsCRLFile(const std::string& name);
    /// Appends the bare names of the revocation lists in `directory`, in the directory's order.
    void GetCRLFileList(std::vector<std::string>& files, const std::string& directory);
    /// Holds the agent's certificate against every list of GetNBISSLCRL. False only when one revokes it: with
    /// no SSL, or no usable file, nothing counts as revoked.
    bool CheckNBISSLCRL();
    /// Holds a certificate against one list. False only when that revokes it; whatever else is wrong is
    /// logged.
    bool verifyNBICertCRL(const std::string& caFile, const std::string& certFile, const std::string& crlFile);
    /// Read the first certificate, or the revocation list, of a PEM file; the caller frees it. Without a file
    /// name it becomes null, and so it does when the file holds none; one that can't be opened leaves it.
    /// @{
    void GetX509Ptr(x509_st*& certificate, const std::string& file);
    void GetX509CRLPtr(X509_crl_st*& crl, const std::string& file);
    /// @}

    // -- Registries: registry.cpp; none owns what it points to ----------------------------------------------

    // Managers by name; a null name throws std::logic_error. One thread at a time.

    void RegisterMgr(const char* name, MgrFactory* factory);  ///< replaces an entry of that name
    void UnregisterMgr(const char* name);                     ///< takes the entry out, if there is one
    MgrFactory* GetNorthMgr(const char* name);                ///< null for an unknown name
    std::map<std::string, MgrFactory*>& GetNorthMgrMap();     ///< the table itself

    /// Locks and hands out the module list. After a result that isn't null call FreeMGRList, and no _add_ref,
    /// _remove_ref, RegisterModule or UnRegisterModule before that: the lock isn't recursive.
    std::list<CorbaI*>* GetMGRList();
    void FreeMGRList();  ///< gives up the lock that GetMGRList took
    /// 0, or -1 when the list can't be locked. Any thread.
    int RegisterModule(CorbaI* module);
    void UnRegisterModule(CorbaI* module);  ///< also for a module that isn't in the list; any thread

    /// The disconnect alarm cache. One thread at a time.
    /// @{
    std::map<std::string, std::string> GetDisconnectMap();
    void SetDisconnectMap(const std::string& key, const std::string& value);
    /// @}

    /// The bundle's request hooks; `impl` must outlive every request. Any thread.
    void SetReqInterceptorImpl(RequestInterceptorBase* impl);
    RequestInterceptorBase* GetReqInterceptorImpl();  ///< null while requests are refused for want of hooks

  private:
    friend class CorbaBaseAgentConfigProbe;  // lets the unit tests see values that no accessor exposes

    CorbaBaseAgentConfig();
    ~CorbaBaseAgentConfig();
    CorbaBaseAgentConfig(const CorbaBaseAgentConfig&) = delete;
    CorbaBaseAgentConfig& operator=(const CorbaBaseAgentConfig&) = delete;

    enum Flag { kFlagInterceptor, kFlagTimeShow, kFlagTimeZone, kFlagAffectObjName, kFlagCount };

    struct Companion;

    bool StartOrb();
    void LogOrbParams();
    void ReadServerOptions(const NameValueList& items);
    void ReadNameOptions(const NameValueList& items);
    void ReadBehaviourOptions(const NameValueList& items);
    void AdjustCorbaAgentOption(unsigned int sslMode);
    void ReplaceLocalHosts();
    void TakeSSLOption(const std::string& line);
    bool StartCompanion(const Companion& companion, const std::string& bin, const std::string& command);

    static CorbaBaseAgentConfig* m_pInstance;
    static void (*s_pfnGracePeriod)(time_t seconds);  // sleeps; the unit tests put in one that doesn't

    std::map<std::string, MgrFactory*> m_mapNorthMgr;
    std::list<CorbaI*> m_listMGR;  // guarded by m_mutex
    std::map<std::string, std::string> m_DisconnectAlarmMapInfo;
    std::string m_EmsVersion;
    std::string m_HostName{"localhost"};
    CORBA::ORB_var m_ORB;
    PortableServer::POA_var m_RootPOA;
    char** m_argv = nullptr;           // made by ACE_OS::string_to_argv
    char* m_nsIorFile = nullptr;       // new[]
    char* m_ntIorFile = nullptr;       // new[]
    char* ior_output_file_ = nullptr;  // new[]
    unsigned long m_IteratorNum = 50;
    unsigned long m_IteratorRestriction = 20;
    unsigned long m_TimeInterval = 30;
    std::string m_IDLVersion{"2.0"};
    std::string m_EmsName{"Zorvex/KLV"};
    std::string m_EmsType{"Tarvo oFabric M4400"};
    unsigned long m_TimeOut = 60;
    unsigned long m_EventQueueLength = 1000;
    std::string m_NamingServiceName{"Naming_Service"};
    std::string m_NamingServiceHost{"localhost"};
    std::string m_NamingServiceOption{"-o ../ns.ior"};
    std::string m_NotifyServiceName{"Notify_Service"};
    std::string m_NotifyServiceHost{"localhost"};
    std::string m_NotifyServiceOption{"-ORBSvcConf ../notify.conf"};
    std::string m_CorbaAgentHost{"localhost"};
    std::string m_CorbaAgentOption;
    std::string m_NamingServiceCmd;
    std::string m_NotifyServiceCmd;
    std::string m_CorbaAgentCmd;
    std::string m_EmsLocation{"local"};
    ACE_Process_Manager m_ProcessMgr{100, nullptr};
    std::map<std::string, int> m_mapServicePid;
    ACE_Thread_Mutex m_mutex;
    std::string m_SSLProfile;
    std::string m_NonSSLProfile;
    std::string m_ReservedStr1;
    unsigned long m_AlarmTimeout = 1800;
    unsigned long m_HeartBeatTimeout = 30;
    unsigned long m_OtherEventTimeout = 86400;
    std::string m_NBISSLPrivateKey;
    std::string m_NBISSLCertificate;
    std::string m_NBISSLCAfile;
    std::string m_NBISSLPrivateKeyPasswd;
    std::string m_NBISSLCRL;
    std::string m_ReservedStr2;
    NS_UTIL::IPAcl m_IPAcl;
    std::vector<char> m_vecFlags = std::vector<char>(kFlagCount, 0);
    ACE_RW_Mutex m_rwLock;
    RequestInterceptorBase* m_pReqInterceptorImpl = nullptr;  // guarded by m_rwLock
    std::string m_CorbaBundleName;
    int m_argc = 0;
    unsigned int m_ORBThrdNum = 4;
    unsigned int m_SSLMode = 0;
    int m_refCount = 0;  // guarded by m_mutex
    int m_SessionReleaseStrategy = 1;
    int m_MaxSession = 10;
    int m_SingleThreadPushEvent = 1;
    int m_SilentTime = 3600;
    unsigned short m_ReservedPort = 0;
    unsigned short m_NamingServicePort = 12001;
    unsigned short m_NamingServiceSSLPort = 22001;
    unsigned short m_NotifyServicePort = 12002;
    unsigned short m_NotifyServiceSSLPort = 22002;
    unsigned short m_CorbaAgentPort = 12003;
    unsigned short m_CorbaAgentSSLPort = 0;
    bool m_ORBThreadPool = true;
    bool m_NamingServiceAutoStart = false;
    bool m_NotifyServiceAutoStart = false;
    bool m_NBISSLCRLCheckStatus = true;
    bool m_UseIPAndPort = false;
    bool m_PersistentEventChannel = false;
    bool m_EmsPingMode = true;
    bool m_ReservedFlag = false;
};

}  // namespace NS_CORBA
