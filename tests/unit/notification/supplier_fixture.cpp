#include "tests/unit/notification/supplier_fixture.h"

#include <algorithm>
#include <fstream>

#include "agent/owned_text.h"
#include "logging/logmgr.h"

namespace qv_test {

StructuredEvent MakeEvent(const std::string& type, const std::string& name, CORBA::ULong entries) {
    StructuredEvent event;
    NS_CORBA::fillFixedHeader(type, event);
    event.filterable_data.length(entries);
    for (CORBA::ULong i = 0; i < entries; ++i) {
        event.filterable_data[i].name = CORBA::string_dup(("name " + std::to_string(i)).c_str());
        event.filterable_data[i].value <<= ("value " + std::to_string(i)).c_str();
    }
    event.remainder_of_body <<= name.c_str();
    return event;
}

std::string NameOf(const StructuredEvent& event) {
    const char* name = nullptr;
    return (event.remainder_of_body >>= name) ? name : "(none)";
}

std::vector<std::string> NamesOf(const std::vector<StructuredEvent>& events) {
    std::vector<std::string> names;
    for (const StructuredEvent& event : events) {
        names.push_back(NameOf(event));
    }
    return names;
}

std::string FilterableText(const StructuredEvent& event, CORBA::ULong index) {
    const char* text = nullptr;
    if (index >= event.filterable_data.length() || !(event.filterable_data[index].value >>= text)) {
        return "(none)";
    }
    return text;
}

CORBA::ULongLong TimeoutOf(const StructuredEvent& event) {
    const CosNotification::PropertySeq& header = event.header.variable_header;
    CORBA::ULongLong timeout = 0;
    if (header.length() != 1 || std::string("Timeout") != header[0].name.in() ||
        !(header[0].value >>= timeout)) {
        ADD_FAILURE() << "the variable header isn't one \"Timeout\"";
    }
    return timeout;
}

SupplierTest::SupplierTest(const std::vector<std::pair<std::string, std::string>>& items) {
    m_items.Set("bLogNotify", "1");
    for (const auto& [name, value] : items) {
        m_items.Set(name, value);
    }
    config().GetOption();
    NS_CORBA::CorbaLogMgr::Instance()->Init();
    orb = MakeOrb();
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    Probe::RootPOA() = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var poas = Probe::RootPOA()->the_POAManager();
    poas->activate();
    service = std::make_unique<FakeNotifyService>(orb.in());
    service->WriteIor(m_dir.File("notify.ior"));
    Probe::NtIorFile() = NS_CORBA::NewText(m_dir.File("notify.ior"));
    manager = std::make_unique<SuppilerMgr>();
    manager->m_pCallBackObj = &callback;
    probe = std::make_unique<NS_CORBA::SuppilerMgrProbe>(*manager);
    waits.SetWakeEvent(&probe->WakeEvent());
    Forget();
}

SupplierTest::~SupplierTest() {
    service->script().ReleaseAll();
    if (manager->thr_count() != 0) {
        waits.ReleaseAll();
        manager->ExitThread();
        manager->wait();
    }
    manager.reset();
    EventMgr::Destroy();
    service.reset();
}

void SupplierTest::EnterService() {
    ASSERT_EQ(0, manager->NotifyServiceInit());
    probe->WasBroken() = false;
    Forget();
}

void SupplierTest::LeaveService() {
    probe->Broken() = true;
    probe->WasBroken() = true;
}

SupplierTest::Texts SupplierTest::Traces() {
    Texts texts;
    for (const LogEntry& entry : m_log->Entries(kSys)) {
        texts.push_back(entry.text);
    }
    return texts;
}

void SupplierTest::ExpectTraces(const std::string& file, const Texts& texts) {
    EXPECT_EQ(texts, Traces());
    for (const LogEntry& entry : m_log->Entries(kSys)) {
        EXPECT_EQ(-1, entry.level);
        ExpectPosition(entry, file);
    }
}

void SupplierTest::ExpectTraced(const std::string& file, const std::string& text) {
    const std::unique_ptr<LogEntry> entry = m_log->Find(kSys, text);
    ASSERT_NE(nullptr, entry) << text;
    EXPECT_EQ(text, entry->text);
    ExpectPosition(*entry, file);
}

void SupplierTest::ExpectDebug(const std::string& file, int level, const std::string& text) {
    const std::unique_ptr<LogEntry> entry = m_log->Find(kDebug, text);
    ASSERT_NE(nullptr, entry) << text;
    EXPECT_EQ(text, entry->text);
    EXPECT_EQ(level, entry->level);
    ExpectPosition(*entry, file);
}

void SupplierTest::ExpectException(const std::string& file, const std::string& text) {
    const std::string head = "Exception: " + text + "==>";
    const std::unique_ptr<LogEntry> entry = m_log->Find(kDebug, head);
    ASSERT_NE(nullptr, entry) << text;
    EXPECT_EQ(0u, entry->text.find(head));
    EXPECT_EQ(1, entry->level);
    ExpectPosition(*entry, file);
}

void SupplierTest::ExpectPosition(const LogEntry& entry, const std::string& file) {
    EXPECT_EQ(file, entry.file) << entry.text;
    EXPECT_EQ("unknown", entry.function);
    std::ifstream source(std::string(QV_SOURCE_DIR) + "/notification/" + entry.file + ".cpp");
    std::string line;
    for (int i = 0; i < entry.line; ++i) {
        std::getline(source, line);
    }
    EXPECT_NE(std::string::npos, line.find("TA_POS;")) << entry.text << ", line " << entry.line;
}

SupplierTest::Texts SupplierTest::NotifyRecords() {
    Texts texts;
    for (const LogEntry& entry : m_log->Entries(kNotify)) {
        EXPECT_EQ(-1, entry.level);
        texts.push_back(entry.text);
    }
    return texts;
}

std::string SupplierTest::State() {
    const bool broken = probe->Broken();
    const bool wasBroken = probe->WasBroken();
    if (broken) {
        return wasBroken ? "out of service" : "just failed";
    }
    return wasBroken ? "settling" : "in service";
}

bool SupplierTest::BufferIsLocked() {
    if (NS_CORBA::g_semEventBuffer.tryacquire() != 0) {
        return true;
    }
    NS_CORBA::g_semEventBuffer.release();
    return false;
}

void SupplierTest::Forget() {
    m_log->Clear();
    callback.Clear();
    script().ClearCalls();
}

}  // namespace qv_test
