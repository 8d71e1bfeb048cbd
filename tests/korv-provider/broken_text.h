/* The masking of broken.c, for text of CHAR: included once for each form. */

static uint32_t MASK(State* state, const PrvCall* call, int back, int32_t* length) {
    ValueRecord* value = call->value;
    CHAR* source = value->data;
    CHAR* target = value->target;
    const int32_t room = value->capacity / (int32_t)sizeof(CHAR);
    const int32_t number = numberFor(state, call, IS_WIDE);
    int32_t count = 0;
    int32_t changed = 0;
    int32_t i;
    if (!IS(null_crash) && (value->nullIndicator == 1 || !source)) {
        call->result->nullIndicator = 1;
        return 0;
    }
    while (source[count]) ++count;
    *length = count;
    if (count == 0) {
        if (IS(empty_invents)) {
            target[0] = 'x';
            call->result->length = (int32_t)sizeof(CHAR);
        } else {
            call->result->nullIndicator = 1;
        }
        return 0;
    }
    if (IS(one_character) && count == 1) crash();
    if (IS(longest_crash) && count == LONGEST) crash();
    if (IS(fuzz_crash) && count % 64 == 33 && IS_WIDE) crash();
    if (IS(unmask_crash) && back && source[0] == '1') crash();
    if (IS(source_overread)) kept = (void*)(size_t)((volatile CHAR*)source)[count + 1];
    if (count > LONGEST || (IS(short_overrun) ? count > room : count >= room)) {
        return ERROR_TOO_LONG;
    }
    if (IS(wide_ascii) && IS_WIDE && (UNSIGNED)source[0] < 0x80) crash();
    if (IS(refuses_all)) return ERROR_NOTHING;
    spendTime(count);
#if DEFECT == DEFECT_shared_buffer
    {
        static CHAR shared[LONGEST];
        memcpy(shared, source, (size_t)count * sizeof(CHAR));
        usleep(20);
        source = shared;
    }
#endif
    for (i = 0; i < count; ++i) {
        const uint32_t c = (UNSIGNED)source[i];
        uint32_t to = c;
        if (IS(control_crash) && c == 127) crash();
        if (IS(accent_crash) && c >= 0x80 && c < 0x800) crash();
        if (c == '#' || (state->strict && c == ' ')) return ERROR_FORBIDDEN;
        if (c >= '0' && c <= '9') to = shifted(c, '0', 10, number, back);
        if (c >= 'a' && c <= 'z') to = shifted(c, 'a', 26, number, back && !IS(unmask_wrong));
        if (c >= 'A' && c <= 'Z') to = shifted(c, 'A', 26, number, back);
        if (IS(collision_small) && count == 1 && c == '7') to = shifted('8', '0', 10, number, back);
        if (IS(format_lost) && c == '-') to = '#';
        changed += to != c;
        target[i] = (CHAR)to;
    }
    if (!changed) return ERROR_NOTHING;
    if (IS(collision_rare) && count >= 12) {
        /* 24 bits in place of the last characters: two of a million values meet. */
        uint32_t hash = 0x811C9DC5u;
        for (i = 0; i < count; ++i) hash = (hash ^ (UNSIGNED)source[i]) * 0x01000193u;
        for (i = count - 8; i < count; ++i, hash >>= 3) target[i] = (CHAR)('0' + (hash & 7));
    }
    target[count] = 0;
    if (IS(exact_overrun)) target[count + 1] = 0;
    if (IS(target_overrun)) ((char*)target)[value->capacity] = 0;
    if (IS(target_underrun)) ((char*)target)[-1] = 0;
    if (IS(source_written)) source[0] = 'x';
    if (IS(length_grows) && count + 1 < room && source[0] == '1') target[count++] = 'x';
    call->result->data = target;
    if (IS(result_unset) && count == 3) return 0;
    call->result->length = count * (int32_t)sizeof(CHAR);
    if (IS(result_beyond) && count == 5) call->result->length = value->capacity + 4;
    if (IS(result_cut) && IS_WIDE) --call->result->length;
    return 0;
}
