-- Objects of the extension korv.
\echo Use "CREATE EXTENSION korv" to load this file. \quit

CREATE SCHEMA korv;
REVOKE ALL ON SCHEMA korv FROM PUBLIC;

CREATE FUNCTION korv.mask(value text, rule text, related text DEFAULT NULL) RETURNS text
    LANGUAGE c STABLE PARALLEL SAFE COST 100 AS 'MODULE_PATHNAME', 'korv_mask';
COMMENT ON FUNCTION korv.mask IS 'masks a value by a rule, such as ''CCN, secret=crm''';

CREATE FUNCTION korv.mask_column(value text, rule text, related text, column_name text) RETURNS text
    LANGUAGE c STABLE PARALLEL SAFE COST 100 AS 'MODULE_PATHNAME', 'korv_mask';
COMMENT ON FUNCTION korv.mask_column IS 'masks a value of a column, which errors name';

CREATE FUNCTION korv.describe(relation regclass, attribute int2, rule text,
        OUT action text, OUT method text, OUT secret text, OUT fingerprint text, OUT protection text,
        OUT related name, OUT type regtype, OUT problem text)
    LANGUAGE c STABLE STRICT AS 'MODULE_PATHNAME', 'korv_describe';
COMMENT ON FUNCTION korv.describe IS 'what a rule would do to a column, or why it cannot be used';

CREATE FUNCTION korv.check(relation regclass)
    RETURNS TABLE (column_name name, rule text, action text, method text, secret text,
                   fingerprint text, protection text, related name, type regtype, problem text)
    LANGUAGE plpgsql STABLE SET search_path = pg_catalog, pg_temp AS $$
#variable_conflict use_column
DECLARE
    unlabelled text;
BEGIN
    SELECT string_agg(quote_ident(attname), ', ' ORDER BY attnum) INTO unlabelled
    FROM pg_attribute
    WHERE attrelid = relation AND attnum > 0 AND NOT attisdropped AND NOT EXISTS (
        SELECT FROM pg_seclabel
        WHERE provider = 'korv' AND classoid = 'pg_class'::regclass AND objoid = attrelid
            AND objsubid = attnum);
    IF unlabelled IS NOT NULL THEN
        RAISE EXCEPTION 'columns of % without a label: %', relation, unlabelled
            USING ERRCODE = 'KV004',
                HINT = 'SECURITY LABEL FOR korv ON COLUMN ... IS ''KEEP'' lets a column pass in clear.';
    END IF;
    RETURN QUERY
        SELECT attname, label, action, method, secret, fingerprint, protection, related,
            type, problem
        FROM pg_attribute
            JOIN pg_seclabel ON provider = 'korv' AND classoid = 'pg_class'::regclass
                AND objoid = attrelid AND objsubid = attnum,
            korv.describe(attrelid, attnum, label)
        WHERE attrelid = relation AND attnum > 0 AND NOT attisdropped
        ORDER BY attnum;
END
$$;
COMMENT ON FUNCTION korv.check IS 'what each column of a table gets';

-- An expression for the text of a column, the same whatever the session's settings are.
CREATE FUNCTION korv.text_of(column_name name, type regtype) RETURNS text
    LANGUAGE sql STABLE STRICT SET search_path = pg_catalog, pg_temp AS $$
    SELECT format(CASE
        WHEN type IN ('date'::regtype, 'timestamp'::regtype)
            THEN $f$pg_catalog.translate(pg_catalog.to_json(%I)::text, 'T"', ' ')$f$
        WHEN type = 'timestamptz'::regtype
            THEN $f$pg_catalog.translate(pg_catalog.to_json(%I AT TIME ZONE 'UTC')::text, 'T"', ' ')$f$
        ELSE '%I::text'
    END, column_name)
$$;

-- The SELECT that masks a table. Casts have no modifiers: one to varchar(10) would cut a value short.
-- They lead to the type below a domain, so that no function of the domain's owner is called.
CREATE FUNCTION korv.select_text(relation regclass, in_view bool) RETURNS text
    LANGUAGE plpgsql STABLE SET search_path = pg_catalog, pg_temp AS $$
DECLARE
    mask CONSTANT text := CASE WHEN in_view THEN 'korv_views' ELSE 'korv' END || '.mask_column';
    problems text;
    list text;
BEGIN
    WITH rules AS (SELECT * FROM korv.check(relation) WITH ORDINALITY),
    parts AS (
        SELECT rules.*, format_type(rules.type, -1) AS type_name,
            format('%s(%s, %L, %s, %L)', mask, korv.text_of(rules.column_name, rules.type), rules.rule,
                coalesce(korv.text_of(other.column_name, other.type), 'NULL'), rules.column_name)
                AS masked
        FROM rules LEFT JOIN rules AS other ON other.column_name = rules.related
    )
    SELECT string_agg(format('%s: %s', quote_ident(column_name), problem), E'\n' ORDER BY ordinality)
            FILTER (WHERE problem IS NOT NULL),
        string_agg(
            CASE
                WHEN action = 'KEEP' THEN quote_ident(column_name)
                WHEN action = 'DROP' THEN NULL
                WHEN action = 'NULL' THEN format('NULL::%s AS %I', type_name, column_name)
                WHEN type = 'timestamptz'::regtype
                    THEN format($f$%s::timestamp AT TIME ZONE 'UTC' AS %I$f$, masked, column_name)
                ELSE format('%s::%s AS %I', masked, type_name, column_name)
            END, ', ' ORDER BY ordinality)
        INTO problems, list FROM parts;
    IF problems IS NOT NULL THEN
        RAISE EXCEPTION 'rules of % cannot be used', relation
            USING ERRCODE = 'KV004', DETAIL = problems;
    END IF;
    RETURN (SELECT format('SELECT %s FROM %I.%I', list, nspname, relname)
            FROM pg_class JOIN pg_namespace ON pg_namespace.oid = relnamespace
            WHERE pg_class.oid = relation);
END
$$;

CREATE FUNCTION korv.masked_select(relation regclass) RETURNS text
    LANGUAGE sql STABLE SET search_path = pg_catalog, pg_temp
    AS 'SELECT korv.select_text(relation, false)';
COMMENT ON FUNCTION korv.masked_select IS 'a SELECT that masks a table, for COPY (...) TO';

CREATE FUNCTION korv.create_masked_view(relation regclass) RETURNS void
    LANGUAGE c STRICT AS 'MODULE_PATHNAME', 'korv_create_masked_view';
COMMENT ON FUNCTION korv.create_masked_view IS 'creates the view TABLE_masked beside a table';

REVOKE ALL ON ALL FUNCTIONS IN SCHEMA korv FROM PUBLIC;

-- PostgreSQL demands of the reader of a view the right to call the functions in it. Whoever may call
-- this one could guess values, so nobody has the right to name it: that takes USAGE of the schema,
-- which a view, once created, does not need.
CREATE SCHEMA korv_views;
REVOKE ALL ON SCHEMA korv_views FROM PUBLIC;

CREATE FUNCTION korv_views.mask_column(value text, rule text, related text, column_name text)
    RETURNS text
    LANGUAGE c STABLE PARALLEL SAFE COST 100 AS 'MODULE_PATHNAME', 'korv_mask_in_view';
GRANT EXECUTE ON FUNCTION korv_views.mask_column TO PUBLIC;
COMMENT ON FUNCTION korv_views.mask_column IS 'for masked views only; grant nobody USAGE of its schema';
