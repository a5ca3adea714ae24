/* The whole module for a host: its objects and entry (module.h), the records that cross the
   boundary (records.h), and every routine that it exports by name, by layer (exports/). */
#ifndef JX_WEM_H
#define JX_WEM_H

#include "jx/base.h"
#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "jx/exports/record.h"
#include "jx/host.h"
#include "jx/module.h"
#include "jx/records.h"

#endif
