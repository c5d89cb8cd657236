/* qzcore.h - every public header of the QZCore library. */
#ifndef QZCORE_H
#define QZCORE_H

#include "qzcore/qztypes.h"
#include "qzcore/qzresult.h"
#include "qzcore/qzmemory.h"
#include "qzcore/qzmutex.h"
#include "qzcore/qztime.h"
#include "qzcore/qzwaitable.h"
#include "qzcore/qzrwlock.h"
#include "qzcore/qzthread.h"
#include "qzcore/qzfile.h"
#include "qzcore/qzsysinfo.h"
#include "qzcore/qzstring.h"
#include "qzcore/qzunicode.h"
#include "qzcore/qzlocale.h"
#include "qzcore/qztextfile.h"
#include "qzcore/qzhost.h"
#include "qzcore/qznamed.h"
#include "qzcore/qzprocess.h"
#include "qzcore/qzgetopt.h"
#include "qzcore/qzregistry.h"
#include "qzcore/qzcom.h"
#include "qzcore/qzlibrary.h"

#endif /* QZCORE_H */
