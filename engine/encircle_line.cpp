#include "engine/encircle_line.h"

CEncircleLine::CEncircleLine(const CEncircleCalInfo& info) { m_info = info; }
