// The state and options of one parse are shared by both readers (the text parser here and the
// MessagePack reader), so they live below both formats, in json/ParserContext.h; the text
// parser's folder offers them under this name as well.
#pragma once

#include "json/ParserContext.h"
