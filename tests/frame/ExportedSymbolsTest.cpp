// The library's boundary is its dynamic symbol table: the public classes and
// functions are there, the implementation classes are not.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

TEST(ExportedSymbolsTest, ThePublicInterfaceIsExportedAndImplementationClassesStayInside)
{
    std::string symbols;
    FILE* pipe = popen((std::string("nm -DC --defined-only '") + VSUPT_LIBRARY_FILE + "'").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    for (int c; (c = fgetc(pipe)) != EOF;) {
        symbols += static_cast<char>(c);
    }
    pclose(pipe);
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
