// Where flib/facts/file_facts.h was in version 2.0.
#pragma once

#include "flib/facts/file_facts.h"
