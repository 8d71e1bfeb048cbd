"""Data masking of columns, tables and files by rules. See Masker and mask."""

from ._engine import ColumnPlan
from ._masker import Masker, mask
from ._records import CODE_DOES_NOT_FIT, MaskError, MaskRecord, Status

__all__ = ["CODE_DOES_NOT_FIT", "ColumnPlan", "MaskError", "MaskRecord", "Masker", "Status", "mask"]
