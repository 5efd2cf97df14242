#include "host/ge/tol.h"

AcGeTol AcGeContext::gTol;
