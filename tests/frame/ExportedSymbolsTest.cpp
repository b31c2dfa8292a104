// The library's boundary is its dynamic symbol table: the public classes and
// functions are there, under the library's version node, and neither the
// implementation classes nor the standard library's templates are.
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

namespace {

// What nm prints for the library's defined dynamic symbols.
std::string definedSymbols(const std::string& options)
{
    std::string symbols;
    FILE* pipe = popen(("nm -D --defined-only " + options + " '" + VSUPT_LIBRARY_FILE + "'").c_str(), "r");
    if (pipe == nullptr) {
        return symbols;
    }
    for (int c; (c = fgetc(pipe)) != EOF;) {
        symbols += static_cast<char>(c);
    }
    pclose(pipe);
    return symbols;
}

// Whether a mangled name belongs to std:: or __gnu_cxx::, or is the typeinfo,
// vtable or guard of something there.
bool isStandardLibraryName(std::string name)
{
    for (const char* special : {"_ZTI", "_ZTS", "_ZTV", "_ZTT", "_ZGV"}) {
        if (name.rfind(special, 0) == 0) {
            name = "_Z" + name.substr(4);
        }
    }
    for (const char* prefix : {"_ZSt", "_ZNSt", "_ZNKSt", "_ZN9__gnu_cxx", "_ZNK9__gnu_cxx", "_ZNSa", "_ZNKSa", "_ZNSs",
                               "_ZNKSs"}) {
        if (name.rfind(prefix, 0) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

TEST(ExportedSymbolsTest, ThePublicInterfaceIsExportedAndImplementationClassesStayInside)
{
    const std::string symbols = definedSymbols("-C");
    ASSERT_FALSE(symbols.empty());
    const char* names[] = {
        "ModuleData::entry()",
        "ModuleData::exit()",
        "ModuleData::m_pHead",
        "ModuleDataControl::ModuleDataControl()",
        "Module::attach()",
        "g_ModuleData",
        "VornSupport::VSUPTInitVornObjectBase()",
        "VornSupport::VSUPTInitVornThread()",
        "VornSupport::VSUPTInitVornLogging()",
        "VornSupport::VSUPTInitVornTimer()",
        "VornSupport::VSUPTInitVornLoggingTimer()",
        "VornSupport::VSUPTFinitVornLoggingTimer()",
        "VornSupport::VSUPTFinitVornTimer()",
        "VornSupport::VSUPTFinitVornLogging()",
        "VornSupport::VSUPTFinitVornThread()",
        "VornSupport::VSUPTFinitVornObjectBase()",
        "VornSupport::g_pCriticalSection",
        "VornSupport::VornObjectBase::addRef()",
        "VornSupport::VornObjectBase::release()",
        "VornSupport::VornObjectBase::normalizeClassName(",
        "typeinfo for VornSupport::VornObjectBase",
        "VornSupport::VornCriticalSectionObject::init()",
        "VornSupport::VornCriticalSectionObject::testAndSet()",
        "VornSupport::VornCriticalSectionObject::unwind()",
        "VornSupport::VornMutexObject::VornMutexObject()",
        "VornSupport::VornCriticalSection::VornCriticalSection(",
        "VornCriticalSectionRecoverFn(void*)",
        "VornSupport::VornCollaborator::notify(VornSupport::VornNotification const&)",
        "VornSupport::VornCollaborator::addDependent(VornSupport::VornDependent&)",
        "VornSupport::VornDependent::handleNotification(",
        "VornSupport::VornNotification::getId() const",
        "VornSupport::VornEvent::set()",
        "VornSupport::VornEvent::wait(int)",
        "VornSupport::VornEventNotification::VornEventNotification()",
        "VornSupport::VornEvent::wait(std::vector<VornSupport::VornEvent*",
        "typeinfo for VornSupport::VornThread",
        "VornSupport::VornThread::start()",
        "VornSupport::VornThread::wait(std::vector<VornSupport::VornThread*",
        "VornSupport::VornThread::getCurrentThreadId()",
        "VornSupport::VornTimer::start(long, long, bool)",
        "VornSupport::VornTimer::TimeInterval::operator<(",
        "VornSupport::VornTimerManager::getInstance()",
        "VornSupport::VornLogging::openLogFile()",
        "VornSupport::VornLogging::endrecord()",
        "VornSupport::VornLogging::m_pInstance",
        "VornSupport::setloglevel(int)",
        "VornSupport::endrecord(VornSupport::VornLogging&)",
        "VornSupport::operator<<(VornSupport::VornLogging&, VornSupport::VornSetLogLevelManipulator const&)",
        "typeinfo for VornSupport::VornException",
        "typeinfo for VornSupport::VornKeyDataNotSupportedException",
        "typeinfo for VornSupport::VornNoSuchElementException",
        "typeinfo for VornSupport::VornInvalidDateException",
        "typeinfo for VornSupport::VornInvalidEncryptionException",
        "typeinfo for VornSupport::VornMissingMessageException",
        "typeinfo for VornSupport::VornPropertyNotFound",
        "VornSupport::VornException::getFormattedMessages[abi:cxx11]() const",
        "VornSupport::VornStringUtilities::narrow(",
        "VornSupport::VornStringUtilities::widen(",
        "VornSupport::VornStringUtilities::trim<std::__cxx11::basic_string<char,",
        "VornSupport::VornStringUtilities::trim<std::__cxx11::basic_string<wchar_t,",
        "VornSupport::VornStringFromChar[abi:cxx11](char const*)",
        "VornSupport::VornStringToChar(",
        "VornSupport::GetAppropriateLocaleObject()",
        "VornSupport::VornLocaleFactory::getDefaultLocale(bool)",
        "VornSupport::g_oLanguageCodeData",
        "VornSupport::VornLockFactory<std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
        "VornSupport::VornReadWriteLock>::get(",
        "typeinfo for VornSupport::VornEventTimerThread",
        "typeinfo for VornSupport::VornBaseSynchronizedQueue",
        "typeinfo for VornSupport::ansi_ctype",
        "typeinfo for VornSupport::utf8_ctype",
        "VornRegularExpressionImplementation<std::__cxx11::basic_string<char, std::char_traits<char>, "
        "std::allocator<char> > >::find(",
        "VornSupport::VornRegularExpression<std::__cxx11::basic_string<char, std::char_traits<char>, "
        "std::allocator<char> > >::setPattern(",
        "VornSupport::VornRegularExpression<std::__cxx11::basic_string<wchar_t, std::char_traits<wchar_t>, "
        "std::allocator<wchar_t> > >::replace(",
    };
    for (const char* name : names) {
        EXPECT_NE(symbols.find(std::string(" ") + name), std::string::npos) << name;
    }
    for (const char* name : {"LockThreadStorage::", "EventImplementation", "VornTimerThread", "VornEventWaitThread",
                             "VornLoggingEventTimerThread", "ThreadWaitTimer", "ThreadWaitDependent", "VornThreadFn",
                             "PatternReader", "MatchStack", "RwLockImplementation"}) {
        EXPECT_EQ(symbols.find(std::string(" ") + name), std::string::npos) << name;
    }
}

TEST(ExportedSymbolsTest, EverySymbolStandsUnderTheOneVersionNodeAndNoStandardTemplateIsExported)
{
    std::istringstream lines(definedSymbols("--with-symbol-versions"));
    int count = 0;
    for (std::string address, type, symbol; lines >> address >> type >> symbol;) {
        if (type == "A") {
            EXPECT_EQ(symbol, "VSUPT_1.0");
            continue;
        }
        ++count;
        const auto at = symbol.find("@@");
        ASSERT_NE(at, std::string::npos) << symbol;
        EXPECT_EQ(symbol.substr(at), "@@VSUPT_1.0");
        EXPECT_FALSE(isStandardLibraryName(symbol.substr(0, at))) << symbol;
    }
    EXPECT_GT(count, 0);
}
