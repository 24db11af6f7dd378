// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#ifdef SLUICE_BUILD
#define SLUICE_EXPORT Q_DECL_EXPORT
#else
#define SLUICE_EXPORT Q_DECL_IMPORT
#endif
