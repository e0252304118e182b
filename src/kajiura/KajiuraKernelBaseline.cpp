#define TIDORA_FILTER_POINTS FilterPointsBaseline
#include "kajiura/KajiuraKernel.h"
