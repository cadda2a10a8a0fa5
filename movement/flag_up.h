#pragma once

namespace wxl::movement {

/// Sets a flag for as long as it lives.
class FlagUp {
public:
    explicit FlagUp(bool& flag) : m_flag(flag) { flag = true; }
    ~FlagUp() { m_flag = false; }
    FlagUp(const FlagUp&) = delete;
    FlagUp& operator=(const FlagUp&) = delete;

private:
    bool& m_flag;
};

}  // namespace wxl::movement
