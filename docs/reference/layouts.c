/* Every public record once, for the debug information that the pictures of layouts come from. */
#include <korv/datacnv.h>
#include <korv/korv.h>
#include <korv/mask.h>
#include <korv/provider.h>

BlockHeader blockHeader;
FieldDefI fieldDefI;
FieldDefX fieldDefX;
FieldRefI fieldRefI;
FieldRefX fieldRefX;
CtrlBlkI ctrlBlkI;
CtrlBlkX ctrlBlkX;
OprDef oprDef;
SvcDefI svcDefI;
SvcDefX svcDefX;
TextDesc textDesc;
FieldDesc fieldDesc;
ParamDesc paramDesc;
PrvDesc prvDesc;
PrvRecord prvRecord;
TokenSlot tokenSlot;
ErrorRecord errorRecord;
ErrorAnchor errorAnchor;
OdbcDate odbcDate;
OdbcTimestamp odbcTimestamp;
ValueRecord valueRecord;
CnvOptions cnvOptions;

KorvMaskSettings korvMaskSettings;
KorvMaskColumn korvMaskColumn;
KorvMaskProvider korvMaskProvider;
KorvMaskStrings korvMaskStrings;
KorvMaskFailures korvMaskFailures;
KorvMaskStatistics korvMaskStatistics;
KorvMaskResult korvMaskResult;
KorvMaskToken korvMaskToken;
KorvMaskRecord korvMaskRecord;

PrvCall prvCall;
PrvOperand prvOperand;
PrvErrorText prvErrorText;
PrvEntry prvEntry;
