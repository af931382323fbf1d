#include "sim/SimAccountText.h"

#include <charconv>
#include <cmath>
#include <concepts>

#include "base/Json.h"
#include "base/NumberText.h"

namespace vmr::sim {

namespace {
template <class T, class Record>
concept Of = std::same_as<std::remove_const_t<T>, Record>;

// The keys of each record, in the order of the file; `field` is a writer or a reader.
template <class Field>
void eachField(Of<BracketSpec> auto& r, Field&& field) {
    field("slTicks", r.slTicks);
    field("tpTicks", r.tpTicks);
}
template <class Field>
void eachField(Of<Position> auto& r, Field&& field) {
    field("qty", r.qty);
    field("avg", r.avg);
    field("realized", r.realized);
}
template <class Field>
void eachField(Of<Order> auto& r, Field&& field) {
    field("id", r.id);
    field("sym", r.sym);
    field("side", r.side);
    field("type", r.type);
    field("qty", r.qty);
    field("limitPrice", r.limitPrice);
    field("stopPrice", r.stopPrice);
    field("state", r.state);
    field("createdAt", r.createdAt);
    field("filledAt", r.filledAt);
    field("fillPrice", r.fillPrice);
    field("ocoId", r.ocoId);
    field("bracket", r.bracket);
    field("tag", r.tag);
}
template <class Field>
void eachField(Of<Fill> auto& r, Field&& field) {
    field("id", r.id);
    field("sym", r.sym);
    field("side", r.side);
    field("qty", r.qty);
    field("price", r.price);
    field("commission", r.commission);
    field("ts", r.ts);
    field("tag", r.tag);
}
template <class Field>
void eachField(Of<Trade> auto& r, Field&& field) {
    field("id", r.id);
    field("sym", r.sym);
    field("side", r.side);
    field("qty", r.qty);
    field("entry", r.entry);
    field("exit", r.exit);
    field("pnl", r.pnl);
    field("fees", r.fees);
    field("openedAt", r.openedAt);
    field("closedAt", r.closedAt);
    field("exitTag", r.exitTag);
    field("mae", r.mae);
    field("mfe", r.mfe);
}
template <class Field>
void eachField(Of<OpenTrade> auto& r, Field&& field) {
    field("side", r.side);
    field("maxQty", r.maxQty);
    field("entryAvg", r.entryAvg);
    field("openedAt", r.openedAt);
    field("realizedStart", r.realizedStart);
    field("fees", r.fees);
    field("exitQty", r.exitQty);
    field("exitNotional", r.exitNotional);
    field("contract", r.contract);
    field("mae", r.mae);
    field("mfe", r.mfe);
}
template <class Field>
void eachField(Of<Snapshot> auto& r, Field&& field) {
    field("balance", r.balance);
    field("startBalance", r.startBalance);
    field("positions", r.positions);
    field("orders", r.orders);
    field("fills", r.fills);
    field("commission", r.commission);
    field.optional("trades", r.trades);
    field.optional("openTrades", r.openTrades);
}

class Writer {
 public:
    std::string text;
    bool finite = true;

    template <class T>
    void operator()(std::string_view key, const T& value) {
        put(key);
        text += ':';
        put(value);
    }
    template <class T>
    void operator()(std::string_view key, const std::optional<T>& value) {
        if (value) (*this)(key, *value);
    }
    template <class T>
    void optional(std::string_view key, const T& value) {
        (*this)(key, value);
    }

    template <class Record>
    void put(const Record& record) requires requires(Writer& w) {
        eachField(record, w);
    }
    {
        open('{');
        eachField(record, *this);
        close('}');
    }
    template <class Value>
    void put(const std::map<std::string, Value, std::less<>>& map) {
        open('{');
        for (const auto& [key, value] : map) (*this)(key, value);
        close('}');
    }
    template <class Record>
    void put(const std::vector<Record>& list) {
        open('[');
        for (const Record& record : list) put(record);
        close(']');
    }
    void put(double value) {
        finite = finite && std::isfinite(value);
        // a bare -0 would read back as an integer, which has no sign
        addWord(value == 0 && std::signbit(value) ? std::string("-0.0") : doubleText(value));
    }
    void put(std::int64_t value) { addWord(std::to_string(value)); }
    void put(const Uuid& id) { put(std::string_view(id.text())); }
    void put(Side side) { put(rawText(side)); }
    void put(OrderType type) { put(rawText(type)); }
    void put(OrderState state) { put(rawText(state)); }
    void put(const std::string& value) { put(std::string_view(value)); }
    void put(std::string_view value) {
        separate();
        text += '"';
        for (const char c : value) addEscaped(c);
        text += '"';
    }

 private:
    void separate() {
        if (text.empty()) return;
        const char before = text.back();
        if (before != '{' && before != '[' && before != ':') text += ',';
    }
    void addWord(std::string_view word) {
        separate();
        text += word;
    }
    void open(char mark) {
        separate();
        text += mark;
    }
    void close(char mark) { text += mark; }
    void addEscaped(char c) {
        constexpr std::string_view digits = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (code < 0x20) {
            text += "\\u00";
            text += digits[code >> 4];
            text += digits[code & 15];
        } else {
            text += c;
        }
    }
};

class Reader {
 public:
    explicit Reader(JsonView object) : object_(object), whole_(object.isObject()) {}
    bool isWhole() const { return whole_; }

    template <class T>
    void operator()(std::string_view key, T& value) {
        whole_ = whole_ && read(object_[key], value);
    }
    template <class T>
    void operator()(std::string_view key, std::optional<T>& value) {
        value.reset();
        if (!object_[key].isNothing()) (*this)(key, value.emplace());
    }
    template <class T>
    void optional(std::string_view key, T& value) {
        if (!object_[key].isNothing()) (*this)(key, value);
    }

    template <class Record>
    static bool read(JsonView json, Record& record) requires requires(Reader& r) {
        eachField(record, r);
    }
    {
        Reader reader(json);
        eachField(record, reader);
        return reader.isWhole();
    }
    template <class Value>
    static bool read(JsonView json, std::map<std::string, Value, std::less<>>& map) {
        if (!json.isObject()) return false;
        for (const auto& [key, value] : json.members()) {
            Value one;
            if (!read(value, one)) return false;
            map.try_emplace(std::string(key), one);  // of a repeated key the first, as in records
        }
        return true;
    }
    template <class Record>
    static bool read(JsonView json, std::vector<Record>& list) {
        if (!json.isArray()) return false;
        list.reserve(json.size());
        for (const JsonView item : json.items())
            if (!read(item, list.emplace_back())) return false;
        return true;
    }
    static bool read(JsonView json, double& value) {
        value = json.number();
        return json.isNumber() && std::isfinite(value);
    }
    // A whole number may also be written with a point or an exponent.
    static bool read(JsonView json, std::int64_t& value) {
        if (json.kind() == JsonView::Kind::integer) {
            value = json.integer();
            return true;
        }
        const double number = json.floating();
        if (json.kind() != JsonView::Kind::floating || !(std::abs(number) < 0x1p63) || number != std::trunc(number))
            return false;
        value = static_cast<std::int64_t>(number);
        return true;
    }
    static bool read(JsonView json, std::string& value) {
        value = json.string();
        return json.isString();
    }
    static bool read(JsonView json, Uuid& value) { return take(Uuid::parse(json.string()), value); }
    static bool read(JsonView json, Side& value) { return take(sideNamed(json.string()), value); }
    static bool read(JsonView json, OrderType& value) { return take(orderTypeNamed(json.string()), value); }
    static bool read(JsonView json, OrderState& value) { return take(orderStateNamed(json.string()), value); }

 private:
    template <class T>
    static bool take(const std::optional<T>& read, T& value) {
        if (read) value = *read;
        return read.has_value();
    }

    JsonView object_;
    bool whole_;
};
}  // namespace

std::optional<std::string> accountText(const Snapshot& account) {
    Writer writer;
    writer.put(account);
    if (!writer.finite) return std::nullopt;
    return std::move(writer.text);
}

std::optional<Snapshot> readAccount(std::string_view text) {
    const auto json = Json::parse(text);
    Snapshot account;
    if (!json || !Reader::read(*json, account)) return std::nullopt;
    return account;
}

}  // namespace vmr::sim
