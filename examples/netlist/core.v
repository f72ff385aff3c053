// examples/netlist/core.v - a small RV32I core of one cycle per instruction, as a design to partition.
// SPDX-License-Identifier: MIT
//
// It has the integer instructions without loads and stores of less than a word, without system calls and counters.
// Instructions and data come from memories outside that answer at once.

module core (
  input         clk,
  input         reset,
  output [31:0] fetch_address,
  input  [31:0] instruction,
  output [31:0] data_address,
  output [31:0] data_out,
  output        data_write,
  input  [31:0] data_in,
  output        trap
);
  wire [31:0] pc, next_pc, pc_plus_4;
  wire [31:0] immediate, a, b, operand, alu_result, result, target;
  wire [4:0]  rd, rs1, rs2;
  wire [3:0]  operation;
  wire        is_branch, is_jal, is_jalr, is_load, is_store, is_lui, is_auipc, is_register;
  wire        writes_register, taken, illegal;

  decoder decode (
    .instruction(instruction), .rd(rd), .rs1(rs1), .rs2(rs2), .operation(operation), .immediate(immediate),
    .is_branch(is_branch), .is_jal(is_jal), .is_jalr(is_jalr), .is_load(is_load), .is_store(is_store),
    .is_lui(is_lui), .is_auipc(is_auipc), .is_register(is_register), .writes_register(writes_register),
    .illegal(illegal)
  );

  register_file registers (
    .clk(clk), .write(writes_register & ~trap), .rd(rd), .value(result), .rs1(rs1), .rs2(rs2), .a(a), .b(b)
  );

  assign operand = is_register | is_branch ? b : immediate;
  alu execute (.operation(operation), .a(a), .b(operand), .result(alu_result));
  branch_unit compare (.kind(instruction[14:12]), .a(a), .b(b), .taken(taken));

  program_counter counter (
    .clk(clk), .reset(reset), .hold(trap), .next(next_pc), .pc(pc), .pc_plus_4(pc_plus_4)
  );
  assign target = (is_jalr ? a : pc) + immediate;
  assign next_pc = is_jal | is_jalr | (is_branch & taken) ? {target[31:1], 1'b0} : pc_plus_4;

  wire [31:0] address = a + immediate;
  assign result = is_load ? data_in
                : is_lui ? immediate
                : is_auipc ? pc + immediate
                : is_jal | is_jalr ? pc_plus_4
                : alu_result;

  wire misaligned = (is_load | is_store) & (address[1] | address[0]);
  trap_latch stop (.clk(clk), .reset(reset), .set(illegal | misaligned), .trap(trap));

  assign fetch_address = pc;
  assign data_address = address;
  assign data_out = b;
  assign data_write = is_store & ~trap;
endmodule


// What the bits of an instruction mean.
module decoder (
  input      [31:0] instruction,
  output     [4:0]  rd,
  output     [4:0]  rs1,
  output     [4:0]  rs2,
  output     [3:0]  operation,
  output reg [31:0] immediate,
  output            is_branch,
  output            is_jal,
  output            is_jalr,
  output            is_load,
  output            is_store,
  output            is_lui,
  output            is_auipc,
  output            is_register,
  output            writes_register,
  output            illegal
);
  wire [6:0] opcode = instruction[6:0];
  wire [2:0] kind = instruction[14:12];
  wire       is_immediate = opcode == 7'b0010011;

  assign rd = instruction[11:7];
  assign rs1 = instruction[19:15];
  assign rs2 = instruction[24:20];
  assign is_register = opcode == 7'b0110011;
  assign is_branch = opcode == 7'b1100011;
  assign is_jal = opcode == 7'b1101111;
  assign is_jalr = opcode == 7'b1100111 & kind == 3'b000;
  assign is_load = opcode == 7'b0000011 & kind == 3'b010;
  assign is_store = opcode == 7'b0100011 & kind == 3'b010;
  assign is_lui = opcode == 7'b0110111;
  assign is_auipc = opcode == 7'b0010111;
  assign writes_register = is_register | is_immediate | is_jal | is_jalr | is_load | is_lui | is_auipc;
  assign illegal = ~(writes_register | is_branch | is_store);
  // The bit that tells subtraction from addition and arithmetic from logical shifts.
  assign operation = {instruction[30] & (is_register | (is_immediate & kind == 3'b101)), kind};

  always @*
    if (is_store)
      immediate = {{21{instruction[31]}}, instruction[30:25], instruction[11:7]};
    else if (is_branch)
      immediate = {{20{instruction[31]}}, instruction[7], instruction[30:25], instruction[11:8], 1'b0};
    else if (is_jal)
      immediate = {{12{instruction[31]}}, instruction[19:12], instruction[20], instruction[30:21], 1'b0};
    else if (is_lui | is_auipc)
      immediate = {instruction[31:12], 12'b0};
    else
      immediate = {{21{instruction[31]}}, instruction[30:20]};
endmodule


// 31 registers and the zero.
module register_file (
  input         clk,
  input         write,
  input  [4:0]  rd,
  input  [31:0] value,
  input  [4:0]  rs1,
  input  [4:0]  rs2,
  output [31:0] a,
  output [31:0] b
);
  reg [31:0] register [0:31];

  always @(posedge clk)
    if (write)
      register[rd] <= value;

  assign a = rs1 == 5'd0 ? 32'd0 : register[rs1];
  assign b = rs2 == 5'd0 ? 32'd0 : register[rs2];
endmodule


module alu (
  input      [3:0]  operation,
  input      [31:0] a,
  input      [31:0] b,
  output reg [31:0] result
);
  wire        subtract = operation[3];
  wire [31:0] sum = a + (subtract ? ~b : b) + subtract;
  wire [31:0] left, right;

  shifter shift_left (.arithmetic(1'b0), .amount(b[4:0]), .value(reversed(a)), .shifted(left));
  shifter shift_right (.arithmetic(operation[3]), .amount(b[4:0]), .value(a), .shifted(right));

  function [31:0] reversed(input [31:0] bits);
    integer i;
    for (i = 0; i < 32; i = i + 1)
      reversed[i] = bits[31 - i];
  endfunction

  always @*
    case (operation[2:0])
      3'b000: result = sum;
      3'b001: result = reversed(left);
      3'b010: result = {31'b0, $signed(a) < $signed(b)};
      3'b011: result = {31'b0, a < b};
      3'b100: result = a ^ b;
      3'b101: result = right;
      3'b110: result = a | b;
      3'b111: result = a & b;
    endcase
endmodule


// To the right, in five steps.
module shifter (
  input         arithmetic,
  input  [4:0]  amount,
  input  [31:0] value,
  output [31:0] shifted
);
  wire        fill = arithmetic & value[31];
  wire [31:0] by_1, by_2, by_4, by_8;

  shift_step #(.BY(1)) step_1 (.enable(amount[0]), .fill(fill), .in(value), .out(by_1));
  shift_step #(.BY(2)) step_2 (.enable(amount[1]), .fill(fill), .in(by_1), .out(by_2));
  shift_step #(.BY(4)) step_4 (.enable(amount[2]), .fill(fill), .in(by_2), .out(by_4));
  shift_step #(.BY(8)) step_8 (.enable(amount[3]), .fill(fill), .in(by_4), .out(by_8));
  shift_step #(.BY(16)) step_16 (.enable(amount[4]), .fill(fill), .in(by_8), .out(shifted));
endmodule


module shift_step #(parameter BY = 1) (
  input         enable,
  input         fill,
  input  [31:0] in,
  output [31:0] out
);
  assign out = enable ? {{BY{fill}}, in[31:BY]} : in;
endmodule


module branch_unit (
  input  [2:0]  kind,
  input  [31:0] a,
  input  [31:0] b,
  output        taken
);
  wire equal = a == b;
  wire below = kind[1] ? a < b : $signed(a) < $signed(b);

  assign taken = (kind[2] ? below : equal) ^ kind[0];
endmodule


module program_counter (
  input             clk,
  input             reset,
  input             hold,
  input      [31:0] next,
  output reg [31:0] pc,
  output     [31:0] pc_plus_4
);
  assign pc_plus_4 = pc + 32'd4;

  always @(posedge clk)
    if (reset)
      pc <= 32'd0;
    else if (!hold)
      pc <= next;
endmodule


// Stays set until the reset.
module trap_latch (
  input      clk,
  input      reset,
  input      set,
  output reg trap
);
  always @(posedge clk)
    if (reset)
      trap <= 1'b0;
    else if (set)
      trap <= 1'b1;
endmodule
