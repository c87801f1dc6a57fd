#include "sim/board/board.h"

#include <algorithm>
#include <stdexcept>

namespace sim {
namespace {

using PageFlags = std::array<std::array<bool, kRegistersPerPage>, kPageCount>;

// Which registers have a name: looked up at every data cycle, so it is a table.
constexpr PageFlags MakeNamed() {
  PageFlags named{};
  for (const Register& each : kRegisters) {
    for (unsigned k = 0; k < each.count; ++k) {
      for (unsigned i = 0; i < each.length; ++i) {
        const RegisterAddress at = each.AddressOf(k, i);
        named[at.page][at.number] = true;
      }
    }
  }
  return named;
}

constexpr PageFlags kNamed = MakeNamed();

}  // namespace

Board::Board(Reports& reports) : reports_(reports) { FitChips(kChipsMax); }

void Board::FitChips(unsigned count) {
  if (count > kChipsMax) throw std::out_of_range("a board has four chip positions");
  for (unsigned position = 0; position < kChipsMax; ++position) {
    chips_[position].SetId(position < count ? kChipIdTw2835 : kEmptyId);
  }
}

void Board::SetId(unsigned position, std::uint8_t id) { chips_.at(position).SetId(id); }

unsigned Board::FittedCount() const {
  return static_cast<unsigned>(
      std::count_if(chips_.begin(), chips_.end(), [](const Chip& chip) { return chip.Fitted(); }));
}

void Board::SetCamera(unsigned channel, Camera camera) {
  ChannelInput& input = chips_.at(channel / kChannelsPerChip).inputs[channel % kChannelsPerChip];
  input.lost = camera == Camera::Off;
  if (camera != Camera::Off) input.pal = camera == Camera::Pal;
}

void Board::SetWeak(unsigned channel, bool weak) {
  chips_.at(channel / kChannelsPerChip).inputs[channel % kChannelsPerChip].weak = weak;
}

void Board::SetMotion(unsigned channel, bool motion) {
  chips_.at(channel / kChannelsPerChip).inputs[channel % kChannelsPerChip].motion = motion;
}

void Board::SetSettle(int reads) {
  settle_reads_ = std::max(reads, -1);
  for (Chip& chip : chips_) chip.LimitSettle(settle_reads_);
}

void Board::SetFillBusy(unsigned reads) {
  for (Chip& chip : chips_) chip.SetFillReads(reads);
}

void Board::SetSyncPeriod(std::uint32_t period_ms) {
  sync_period_ms_ = period_ms;
  sync_held_ = false;
}

void Board::HoldSync(bool level) {
  sync_held_ = true;
  sync_level_ = level;
}

bool Board::Sync() const {
  if (sync_held_) return sync_level_;
  return sync_period_ms_ != 0 && ((now_ms_ / sync_period_ms_) & 1) != 0;
}

void Board::Poke(unsigned position, std::uint8_t page, std::uint8_t reg, std::uint8_t value) {
  chips_.at(position).Poke(page, reg, value, now_ms_);
}

std::uint8_t Board::Peek(unsigned position, RegisterAddress at) const {
  return Peek(position, at.page, at.number);
}

std::uint8_t Board::Peek(unsigned position, std::uint8_t page, std::uint8_t reg) const {
  return chips_.at(position).Peek(page, reg, position == 0 && Sync());
}

const ChannelInput& Board::Input(unsigned channel) const {
  return chips_.at(channel / kChannelsPerChip).inputs[channel % kChannelsPerChip];
}

InputColors Board::Colors(unsigned channel) const {
  return chips_.at(channel / kChannelsPerChip).Colors(channel % kChannelsPerChip);
}

std::uint32_t Board::FrozenAt(unsigned channel) const { return FrozenState(channel).at_ms; }

const Frozen& Board::FrozenState(unsigned channel) const {
  return chips_.at(channel / kChannelsPerChip)
      .FrozenState(static_cast<std::uint8_t>(channel % kChannelsPerChip));
}

const Bitmap& Board::BitmapOf(unsigned position) const { return chips_.at(position).DrawnBitmap(); }

void Board::Store(BusWindow window, std::uint32_t value, unsigned bytes) {
  CheckWidth(Report::Access::Write, window, bytes);
  const std::uint8_t byte = value & 0xFF;
  switch (window) {
    case BusWindow::Select:
      select_ = byte;
      break;
    case BusWindow::Address:
      for (unsigned position = 0; position < kChipsMax; ++position) {
        if (SelectedPage(position) < kPageCount) {
          chips_[position].address = data_lines_.Pass(byte);
        }
      }
      break;
    case BusWindow::Data:
      StoreData(data_lines_.Pass(byte));
      break;
  }
}

std::uint8_t Board::Load(BusWindow window, unsigned bytes) {
  CheckWidth(Report::Access::Read, window, bytes);
  // The other two windows only take.
  return window == BusWindow::Data ? data_lines_.Pass(LoadData()) : 0xFF;
}

void Board::StoreData(std::uint8_t value) {
  for (unsigned position = 0; position < kChipsMax; ++position) {
    const std::uint8_t page = SelectedPage(position);
    if (page >= kPageCount) continue;
    Chip& chip = chips_[position];
    CheckNamed(position, page, chip.address, Report::Access::Write);
    chip.Write(page, chip.address, value, settle_reads_, now_ms_);
    ++chip.address;
  }
}

std::uint8_t Board::LoadData() {
  std::uint8_t value = 0xFF;
  unsigned selected = 0;
  std::uint8_t reg = 0;
  for (unsigned position = 0; position < kChipsMax; ++position) {
    const std::uint8_t page = SelectedPage(position);
    if (page >= kPageCount) continue;
    Chip& chip = chips_[position];
    CheckNamed(position, page, chip.address, Report::Access::Read);
    reg = chip.address;
    const bool counts_down = chip.CountsDown(page, reg);
    value &= chip.Read(page, reg, position == 0 && Sync());
    if (counts_down && on_countdown) on_countdown();
    ++chip.address;
    ++selected;
  }
  if (selected > 1) {
    reports_.Add(
        {.kind = ReportKind::Contention, .select = select_, .chips = selected, .reg = reg});
  }
  return value;
}

void Board::CheckNamed(unsigned position, std::uint8_t page, std::uint8_t reg,
                       Report::Access access) {
  if (kNamed[page][reg] || !chips_[position].Fitted()) return;
  reports_.Add({.kind = ReportKind::UnnamedRegister,
                .access = access,
                .position = position,
                .page = page,
                .reg = reg});
}

void Board::CheckWidth(Report::Access access, BusWindow window, unsigned bytes) {
  if (bytes == 1) return;
  reports_.Add(
      {.kind = ReportKind::WideAccess, .access = access, .window = window, .bytes = bytes});
}

}  // namespace sim
