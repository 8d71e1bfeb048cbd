// A second module that includes the token catalogue, to be compared with the first.
#include "korv/tokens.h"

const wchar_t* const* tokenIdsElsewhere() {
    return gTokenIds;
}

const wchar_t* countryElsewhere() {
    return Nid_FR;
}
