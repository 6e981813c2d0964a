// Compiled as the library's sources are when they are built on the plain edition. It compiles only if what lies beyond
// the contract is out of their reach: headers of the embedded edition, and those of the tests.
#if __has_include("Platform/PlatformExport.h") ||                                                                      \
                  __has_include("Platform/Thread/WorkerWait.h") ||                                                     \
                                __has_include("Platform/DataProcess/StallStatistic.h") ||                              \
                                              __has_include("Platform/BandData/BandMemory.h")
#error "the embedded edition's own headers can be included"
#endif
#if __has_include("PlainHook.h") ||                                                                                    \
                  __has_include("PlainSetup.h") ||                                                                     \
                                __has_include("PlainFIFO.h") ||                                                        \
                                              __has_include("Tests/Support/LogCapture.h") ||                           \
                                                            __has_include("PlatformEnds.h") ||                         \
                                                                          __has_include("Host/CMakeLists.txt")
#error "headers of the tests can be included"
#endif
#if !__has_include("Platform/Thread/TamBaseThread.h") || !__has_include("DataMap/PrintUnitDataMap_Base.h")
#error "the contract's headers or the library's cannot be included"
#endif
