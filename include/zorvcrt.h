/**
 * @file zorvcrt.h
 * The whole of zorvcrt: includes every public header of the library.
 */
#ifndef ZORVCRT_ZORVCRT_H
#define ZORVCRT_ZORVCRT_H

#include "zfxapi.h"

/* foundation */
#include "CompareString.h"
#include "GetErrorNumber.h"
#include "GetErrorText.h"
#include "NextToken.h"
#include "TrimString.h"
#include "crtvers.h"
#include "dllist.h"
#include "format.h"
#include "strbuf.h"
#include "strptrlist.h"
#include "zfxmemory.h"

/* os */
#include "CopyDirTree.h"
#include "CreatePath.h"
#include "FileStatus.h"
#include "GetComputerName.h"
#include "GetExecutablePath.h"
#include "GetFileLine.h"
#include "GetTempDir.h"
#include "RelativeDirToAbsolute.h"
#include "dynlib.h"
#include "event.h"
#include "exec.h"
#include "gets_legacy.h"
#include "kill.h"
#include "mutex.h"
#include "osuser_unix.h"
#include "procwait.h"
#include "safe_gets.h"
#include "security.h"
#include "setpname.h"
#include "sockredir.h"
#include "tcpsock.h"
#include "thread.h"
#include "tls.h"
#include "usergroups_unix.h"
#include "zfxsemaphore.h"

/* conv */
#include "Base64.h"
#include "intconv.h"
#include "realconv.h"
#include "utf.h"
#include "uu.h"

/* config */
#include "conf.h"
#include "dataarea.h"
#include "readrcs.h"
#include "zorvrcs.h"

/* json */
#include "grammar.h"
#include "scanner.h"
#include "zjson_expression.h"
#include "zjson_util.h"
#include "zjsondriver.h"

/* log */
#include "logfilename.h"
#include "logger.h"
#include "sourceloc.h"

/* time */
#include "datedelta.h"
#include "iso8601.h"
#include "rfc2822.h"
#include "timestamps.h"
#include "zdbclock.h"

#endif
