// Routines on their way: a weak answer until the real one is linked.
#define PENDING(name) \
  extern "C" __attribute__((weak, visibility("default"))) unsigned name() { return 0x803fc004u; }
PENDING(bkwembuildpath)
PENDING(bkwembuildpathdestroy)
PENDING(bkwemsplitpath)
PENDING(bkwemsplitpathdestroy)
PENDING(bkwemremove)
PENDING(bkwemexist)
PENDING(bkwemisdir)
PENDING(bkwemmakedirectory)
PENDING(bkwemcopy)
PENDING(bkwemrename)
PENDING(jxwemcreatename)
PENDING(jxwemdirectoryclose)
PENDING(bkwemopendir)
PENDING(bkwemclosedir)
PENDING(bkwemreaddir)
PENDING(jxwemdirectorymemberexist)
PENDING(bkweminfo)
PENDING(bkwemfsinfo)
#define PENDING_NULL(name) \
  extern "C" __attribute__((weak, visibility("default"))) void *name() { return nullptr; }
PENDING_NULL(jxwemdirectoryopen)
PENDING_NULL(jxweminfo)
PENDING_NULL(jxwemfsinfo)
PENDING_NULL(jxwemdirectorylist)
