// SPDX-License-Identifier: MIT
#include "export/cfg_fields.h"

#include "device/cfg_layout.h"

namespace {

// The visitor of the layout that takes down what it is handed.
class Collector {
public:
    CfgRow fields;

    template <class Field> void operator()(const char *name, const Field &field)
    {
        if constexpr (std::is_integral_v<Field>)
            fields.push_back({name, static_cast<int64_t>(field)});
        else
            fields.push_back({name, field});
    }

    template <class Int> void rows(const char *name, ArrayView<Mac> &table, CountOf<Int>)
    {
        fields.push_back({name, &table});
    }
    template <class Int> void rows(const char *name, ArrayView<HostSlot> &table, CountOf<Int>)
    {
        fields.push_back({name, &table});
    }
    template <class Int, class Row> void rows(const char *name, ArrayView<Row> &table, CountOf<Int>)
    {
        std::vector<CfgRow> made;
        for (Row &row : table) {
            Collector inner;
            visit_fields(inner, row);
            made.push_back(std::move(inner.fields));
        }
        fields.push_back({name, std::move(made)});
    }
};

} // namespace

CfgRow collect_fields(WtpCfg &cfg, uint8_t wtp_type)
{
    Collector collector;
    visit_fields(collector, cfg, wtp_type);
    return std::move(collector.fields);
}
