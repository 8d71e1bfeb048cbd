"""Masking by map_partitions of Dask, in processes of its own: the result is that of one process."""
import dask.dataframe as dd
import pyarrow.parquet as pq
from customers import RULES, write_customers, write_secrets

import korv


def test_partitions_give_the_rows_of_one_process(tmp_path):
    clear, secrets = tmp_path / "clear.parquet", tmp_path / "secrets.txt"
    write_customers(clear, 200_000)
    write_secrets(secrets)
    masker = korv.Masker(RULES, secrets)
    customers = dd.read_parquet(clear, split_row_groups=True)
    assert customers.npartitions == 4
    masked = customers.map_partitions(masker.mask_table, errors=[], meta=masker.mask_table(customers._meta))
    masked.to_parquet(tmp_path / "masked", compute_kwargs={"scheduler": "processes"})
    records = []
    expected = masker.mask_table(pq.read_table(clear), errors=records)
    assert len(records) > 0
    result = pq.read_table(tmp_path / "masked", columns=expected.column_names)
    assert result.sort_by("ID").to_pylist() == expected.to_pylist()
